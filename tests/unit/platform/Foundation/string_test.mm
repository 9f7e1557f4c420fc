#import "unit/platform/Foundation/counted.h"

#include <climits>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace ostrel::tests;

class FoundationString : public FoundationTest {};

namespace {

NSString* fromBytes(const std::string& bytes) {
    return [[[NSString alloc] initWithBytes:bytes.data() length:bytes.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

} // namespace

TEST_F(FoundationString, ConstantIsUtf8) {
    NSString* const string = @"Kamera für 日本 🎥";
    EXPECT_STREQ([string UTF8String], "Kamera für 日本 🎥");
    EXPECT_EQ([string length], 16u);
    [string release]; // nobody owns it
    [string release];
    EXPECT_EQ([string retain], string);
    EXPECT_EQ([string autorelease], string);
}

TEST_F(FoundationString, LengthCountsUtf16Units) {
    EXPECT_EQ([[NSString string] length], 0u);
    EXPECT_EQ([[NSString stringWithUTF8String:"abc"] length], 3u);
    EXPECT_EQ([[NSString stringWithUTF8String:"\u00E9"] length], 1u);
    EXPECT_EQ([[NSString stringWithUTF8String:"\uFFFD"] length], 1u);
    EXPECT_EQ([[NSString stringWithUTF8String:"\U0001F3A5"] length], 2u);
}

TEST_F(FoundationString, BytesComeBackAsTheyWere) {
    for (const std::string bytes : {"", "plain", "\x7F", "\u0080", "\u07FF", "\u0800", "\uD7FF", "\uE000",
                                    "\U00010000", "\U0010FFFF"}) {
        NSString* const string = fromBytes(bytes);
        ASSERT_TRUE(string != nil) << bytes;
        EXPECT_EQ(text(string), bytes);
        EXPECT_TRUE([string isEqualToString:[NSString stringWithUTF8String:bytes.c_str()]]) << bytes;
    }
}

TEST_F(FoundationString, WhatIsNotUtf8IsNoString) {
    for (const char* bytes : {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3", "\xC3(", "\xE0\x9F\xBF",
                              "\xE2\x82", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x9F\x8E",
                              "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "good\xFE"}) {
        EXPECT_EQ(fromBytes(bytes), nil) << bytes;
        EXPECT_EQ([[NSString alloc] initWithUTF8String:bytes], nil) << bytes;
    }
}

TEST_F(FoundationString, AsciiHasSevenBits) {
    EXPECT_EQ(text([[[NSString alloc] initWithBytes:"abc" length:3
                                           encoding:NSASCIIStringEncoding] autorelease]),
              "abc");
}

TEST_F(FoundationString, ZeroIsACharacterLikeOthers) {
    NSString* const string = fromBytes(std::string("a\0b", 3));
    EXPECT_EQ([string length], 3u);
    EXPECT_FALSE([string isEqual:@"a"]);
    EXPECT_EQ([string UTF8String][2], 'b');
}

TEST_F(FoundationString, EqualByUnitsAndNothingElse) {
    NSString* const made = [NSString stringWithUTF8String:"K\u00FCche"];
    EXPECT_TRUE([made isEqualToString:@"Küche"]);
    EXPECT_TRUE([@"Küche" isEqual:made]);
    EXPECT_EQ([made hash], [@"Küche" hash]);
    EXPECT_EQ([[NSString string] hash], [@"" hash]);
    EXPECT_FALSE([made isEqualToString:@"Ku\u0308che"]); // canonically the same
    EXPECT_FALSE([made isEqualToString:@"Küch"]);
    EXPECT_FALSE([@"Küch" isEqualToString:made]);
    EXPECT_FALSE([made isEqualToString:nil]);
    EXPECT_FALSE([made isEqual:nil]);
    EXPECT_FALSE([@"1" isEqual:[NSNumber numberWithInt:1]]);
}

TEST_F(FoundationString, CopiesAndDescribesItself) {
    NSString* const made = [NSString stringWithFormat:@"%d", 5];
    NSString* const copy = [made copy];
    EXPECT_TRUE([copy isEqual:made]);
    EXPECT_EQ(text([made description]), "5");
    EXPECT_EQ(text([NSString stringWithString:made]), "5");
    [copy release];
}

TEST_F(FoundationString, Formats) {
    const int width = 6;
    const struct {
        NSString* result;
        const char* expected;
    } table[] = {
        {[NSString stringWithFormat:@"plain"], "plain"},
        {[NSString stringWithFormat:@""], ""},
        {[NSString stringWithFormat:@"100 %%"], "100 %"},
        {[NSString stringWithFormat:@"%@|%@", @"über", [NSNumber numberWithInt:-3]], "über|-3"},
        {[NSString stringWithFormat:@"<%@>", (id)nil], "<(null)>"},
        {[NSString stringWithFormat:@"%@ %@", [NSObject class], [NSArray arrayWithObject:@"a"]],
         "NSObject (a)"},
        {[NSString stringWithFormat:@"%d %i", INT_MIN, INT_MAX], "-2147483648 2147483647"},
        {[NSString stringWithFormat:@"%u %o %x %X", UINT_MAX, 8u, 255u, 255u], "4294967295 10 ff FF"},
        {[NSString stringWithFormat:@"%hhd %hhu", 257, 257], "1 1"},
        {[NSString stringWithFormat:@"%hd %hu", 65537, 65537], "1 1"},
        {[NSString stringWithFormat:@"%ld %lu", LONG_MIN, ULONG_MAX],
         "-9223372036854775808 18446744073709551615"},
        {[NSString stringWithFormat:@"%lld %llu", LLONG_MIN, ULLONG_MAX],
         "-9223372036854775808 18446744073709551615"},
        {[NSString stringWithFormat:@"%lx", 0xFFFFFFFFFul], "fffffffff"},
        {[NSString stringWithFormat:@"%jd %ju", INTMAX_MIN, UINTMAX_MAX],
         "-9223372036854775808 18446744073709551615"},
        {[NSString stringWithFormat:@"%zu %td", SIZE_MAX, PTRDIFF_MIN],
         "18446744073709551615 -9223372036854775808"},
        {[NSString stringWithFormat:@"[%5d][%-5d][%05d][%+d][% d]", 42, 42, 42, 42, 42],
         "[   42][42   ][00042][+42][ 42]"},
        {[NSString stringWithFormat:@"[%*d][%-*d][%.*f]", width, 1, width, 2, 3, 0.5],
         "[     1][2     ][0.500]"},
        {[NSString stringWithFormat:@"[%*d]", -width, 1], "[1     ]"},
        {[NSString stringWithFormat:@"%.*f", -1, 0.5], "0.500000"},
        {[NSString stringWithFormat:@"%.3d %#x %#o", 5, 255u, 8u], "005 0xff 010"},
        {[NSString stringWithFormat:@"%f %.2f %5.1f", 1.5, 2.345, 9.96], "1.500000 2.35 "
                                                                         " 10.0"},
        {[NSString stringWithFormat:@"%e %E %g %G", 12345.678, 0.5, 1e-7, 1e20],
         "1.234568e+04 5.000000E-01 1e-07 1E+20"},
        {[NSString stringWithFormat:@"%a %A", 1.0, 0.5], "0x1p+0 0X1P-1"},
        {[NSString stringWithFormat:@"%c%c", 'o', 'k'], "ok"},
        {[NSString stringWithFormat:@"%s|%.2s|%5s|%-5s|", "text", "text", "ab", "ab"],
         "text|te|   ab|ab   |"},
        {[NSString stringWithFormat:@"%s", (const char*)nullptr], "(null)"},
#ifndef GNUSTEP // which takes a long double for a double, and wide characters for bytes
        {[NSString stringWithFormat:@"%.1Lf", 1.25L], "1.2"},
        {[NSString stringWithFormat:@"%ls", L"wide \u00FC"], "wide ü"},
#endif
        {[NSString stringWithFormat:@"%p", reinterpret_cast<void*>(0xABC)], "0xabc"},
        {[NSString stringWithFormat:@"%d %s %f %@ %lld %c", 1, "two", 3.0, @"four", 5ll, '6'],
         "1 two 3.000000 four 5 6"},
    };
    for (const auto& row : table)
        EXPECT_EQ(text(row.result), row.expected);
}

TEST_F(FoundationString, FormatsOfManyArgumentsAndLongTexts) {
    const std::string longText(100000, 'x');
    NSString* const twice = [NSString stringWithFormat:@"%s%s", longText.c_str(), longText.c_str()];
    EXPECT_EQ(text(twice), longText + longText);
    EXPECT_EQ(text([NSString stringWithFormat:@"%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f%d%f", 1, 1., 2, 2., 3, 3., 4,
                                              4., 5, 5., 6, 6., 7, 7., 8, 8., 9, 9.]),
              "11.00000022.00000033.00000044.00000055.00000066.00000077.00000088.00000099.000000");
}

TEST_F(FoundationString, NoTextEndsTheProcess) {
    EXPECT_DEATH(doWrong([] { [NSString stringWithUTF8String:nullptr]; }), "NULL");
}

TEST_F(FoundationString, NumbersHavePointsWhereThePeopleWriteCommas) {
    setenv("LOCPATH", OSTREL_TEST_LOCALES, 1);
    ASSERT_TRUE(std::setlocale(LC_ALL, "de_DE.UTF-8")) << OSTREL_TEST_LOCALES;
    unsetenv("LOCPATH"); // of which the C library keeps a copy for each locale that is made
    char written[16];
    std::snprintf(written, sizeof written, "%.1f", 1.5);
    NSString* const formatted = [NSString stringWithFormat:@"%.1f %@", 1.5, [NSNumber numberWithDouble:2.5]];
    NSString* const described = [[NSNumber numberWithFloat:0.25F] description];
    std::setlocale(LC_ALL, "C");
    EXPECT_STREQ(written, "1,5");
    EXPECT_EQ(text(formatted), "1.5 2.5");
    EXPECT_EQ(text(described), "0.25");
}
