#import "unit/platform/Foundation/counted.h"

#include <climits>
#include <cmath>
#include <string>

using namespace ostrel::tests;

class FoundationNumber : public FoundationTest {};

TEST_F(FoundationNumber, EachKindKeepsItsLimits) {
    EXPECT_EQ([[NSNumber numberWithChar:CHAR_MIN] charValue], CHAR_MIN);
    EXPECT_EQ([[NSNumber numberWithUnsignedChar:UCHAR_MAX] unsignedCharValue], UCHAR_MAX);
    EXPECT_EQ([[NSNumber numberWithShort:SHRT_MIN] shortValue], SHRT_MIN);
    EXPECT_EQ([[NSNumber numberWithUnsignedShort:USHRT_MAX] unsignedShortValue], USHRT_MAX);
    EXPECT_EQ([[NSNumber numberWithInt:INT_MIN] intValue], INT_MIN);
    EXPECT_EQ([[NSNumber numberWithUnsignedInt:UINT_MAX] unsignedIntValue], UINT_MAX);
    EXPECT_EQ([[NSNumber numberWithLong:LONG_MIN] longValue], LONG_MIN);
    EXPECT_EQ([[NSNumber numberWithUnsignedLong:ULONG_MAX] unsignedLongValue], ULONG_MAX);
    EXPECT_EQ([[NSNumber numberWithLongLong:LLONG_MIN] longLongValue], LLONG_MIN);
    EXPECT_EQ([[NSNumber numberWithUnsignedLongLong:ULLONG_MAX] unsignedLongLongValue], ULLONG_MAX);
    EXPECT_EQ([[NSNumber numberWithInteger:NSIntegerMin] integerValue], NSIntegerMin);
    EXPECT_EQ([[NSNumber numberWithUnsignedInteger:NSUIntegerMax] unsignedIntegerValue], NSUIntegerMax);
    EXPECT_EQ([[NSNumber numberWithFloat:1.25f] floatValue], 1.25f);
    EXPECT_EQ([[NSNumber numberWithDouble:1e300] doubleValue], 1e300);
    EXPECT_TRUE([[NSNumber numberWithBool:YES] boolValue]);
    EXPECT_FALSE([[NSNumber numberWithBool:NO] boolValue]);
    NSNumber* const made = [[NSNumber alloc] initWithInt:-5];
    EXPECT_EQ([made intValue], -5);
    [made release];
}

TEST_F(FoundationNumber, AnswersInOtherKindsAsCConverts) {
    NSNumber* const number = [NSNumber numberWithInt:-1];
    EXPECT_EQ([number unsignedCharValue], 255);
    EXPECT_EQ([number unsignedIntValue], UINT_MAX);
    EXPECT_EQ([number longLongValue], -1);
    EXPECT_EQ([number doubleValue], -1.0);
    EXPECT_EQ([[NSNumber numberWithUnsignedInt:UINT_MAX] doubleValue], 4294967295.0);
    EXPECT_EQ([[NSNumber numberWithUnsignedLongLong:ULLONG_MAX] doubleValue], 18446744073709551615.0);
    EXPECT_EQ([[NSNumber numberWithInt:0x12345] shortValue], 0x2345);
    EXPECT_EQ([[NSNumber numberWithDouble:-2.9] intValue], -2);
    EXPECT_EQ([[NSNumber numberWithDouble:3e9] unsignedIntValue], 3000000000u);
    EXPECT_EQ([[NSNumber numberWithDouble:0.1] floatValue], 0.1f);
}

TEST_F(FoundationNumber, IsTrueUnlessZero) {
    EXPECT_TRUE([[NSNumber numberWithInt:256] boolValue]); // whose last byte is 0
    EXPECT_TRUE([[NSNumber numberWithLongLong:1ll << 40] boolValue]);
    EXPECT_TRUE([[NSNumber numberWithDouble:0.5] boolValue]);
    EXPECT_FALSE([[NSNumber numberWithDouble:0] boolValue]);
    EXPECT_EQ([[NSNumber numberWithBool:YES] intValue], 1);
    EXPECT_EQ([[NSNumber numberWithBool:4] intValue], 1);
}

TEST_F(FoundationNumber, EqualsByValueWhateverTheKind) {
    NSNumber* const one = [NSNumber numberWithInt:1];
    for (NSNumber* other :
         {[NSNumber numberWithChar:1], [NSNumber numberWithUnsignedLongLong:1], [NSNumber numberWithFloat:1],
          [NSNumber numberWithDouble:1], [NSNumber numberWithBool:YES]}) {
        EXPECT_TRUE([one isEqual:other]);
        EXPECT_TRUE([other isEqualToNumber:one]);
        EXPECT_EQ([one hash], [other hash]);
    }
    EXPECT_TRUE([[NSNumber numberWithDouble:0.5] isEqual:[NSNumber numberWithFloat:0.5f]]);
    EXPECT_TRUE([[NSNumber numberWithDouble:-0.0] isEqual:[NSNumber numberWithInt:0]]);
    EXPECT_FALSE([one isEqual:[NSNumber numberWithInt:2]]);
    EXPECT_FALSE([one isEqual:[NSNumber numberWithInt:-1]]);
    EXPECT_FALSE([one isEqual:[NSNumber numberWithDouble:1.5]]);
    EXPECT_FALSE([[NSNumber numberWithDouble:0.1] isEqual:[NSNumber numberWithFloat:0.1f]]);
    EXPECT_FALSE([[NSNumber numberWithInt:-1] isEqual:[NSNumber numberWithUnsignedLongLong:ULLONG_MAX]]);
#ifndef GNUSTEP // which compares both as numbers of kind double
    EXPECT_FALSE([[NSNumber numberWithLongLong:(1ll << 53) + 1] isEqual:[NSNumber numberWithDouble:0x1p53]]);
#endif
    EXPECT_FALSE([one isEqual:@"1"]);
    EXPECT_FALSE([one isEqual:nil]);
}

TEST_F(FoundationNumber, DescribesItself) {
    const std::string leastChar = std::to_string(CHAR_MIN); // 0 on ARM, where char has no sign
    const struct {
        NSNumber* number;
        std::string expected;
    } table[] = {
        {[NSNumber numberWithChar:CHAR_MIN], leastChar},
        {[NSNumber numberWithUnsignedChar:255], "255"},
        {[NSNumber numberWithBool:YES], "1"},
        {[NSNumber numberWithBool:NO], "0"},
        {[NSNumber numberWithInt:INT_MIN], "-2147483648"},
        {[NSNumber numberWithLongLong:LLONG_MIN], "-9223372036854775808"},
        {[NSNumber numberWithUnsignedLongLong:ULLONG_MAX], "18446744073709551615"},
        {[NSNumber numberWithFloat:0.1f], "0.1"},
        {[NSNumber numberWithFloat:1.0f / 3], "0.3333333"},
        {[NSNumber numberWithDouble:0.1], "0.1"},
        {[NSNumber numberWithDouble:1.0 / 3], "0.3333333333333333"},
        {[NSNumber numberWithDouble:3], "3"},
        {[NSNumber numberWithDouble:1e20], "1e+20"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(text([row.number description]), row.expected);
        EXPECT_EQ(text([row.number stringValue]), row.expected);
    }
}

TEST_F(FoundationNumber, CopyIsEqual) {
    NSNumber* const number = [NSNumber numberWithInt:7];
    NSNumber* const copy = [number copy];
    EXPECT_TRUE([copy isEqual:number]);
    [copy release];
}
