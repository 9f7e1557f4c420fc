#include "apps/camera/y4m.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(Y4m, HeaderHasOneLengthForAllRatesAndComesBack) {
    const std::string plain = y4mHeaderLine({640, 480}, {30, 1});
    const std::string exact = y4mHeaderLine({640, 480}, {4294967295U, 4294967295U});
    EXPECT_EQ(plain.size(), exact.size());
    EXPECT_EQ(0U, plain.find("YUV4MPEG2 W640 H480 F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED XPAD="));
    Y4mHeader header;
    EXPECT_EQ("", parseY4mHeader(plain.substr(0, plain.size() - 1), header));
    EXPECT_EQ(640, header.width);
    EXPECT_EQ(480, header.height);
    EXPECT_EQ(30U, header.rateNumerator);
}

// One red pixel right of a grey one, in the planes of every layout. Red: Y 81, U 90, V 240.
TEST(Y4m, PlanesOfEveryLayoutBecomeTheirColours) {
    const struct {
        Y4mColours colours;
        bool fullRange;
        std::vector<uint8_t> planes;
        std::vector<int> bgr; // of both pixels
    } cases[] = {
        {Y4M_444, false, {126, 81, 128, 90, 128, 240}, {128, 128, 128, 0, 0, 255}},
        {Y4M_422, false, {81, 81, 90, 240}, {0, 0, 255, 0, 0, 255}},
        {Y4M_420, true, {76, 76, 85, 255}, {0, 0, 254, 0, 0, 254}},
        {Y4M_MONO, false, {16, 235}, {0, 0, 0, 255, 255, 255}},
    };
    for (const auto& test : cases) {
        const Y4mHeader header = {2, 1, 25, 1, test.colours, test.fullRange};
        ASSERT_EQ(test.planes.size(), y4mFrameBytes(header));
        std::vector<uint8_t> argb;
        y4mToArgb(header, test.planes, argb);
        ASSERT_EQ(8U, argb.size());
        for (std::size_t at = 0; at < 6; ++at)
            EXPECT_NEAR(test.bgr[at], argb[at + at / 3], 1) << test.colours << " " << at;
    }
    // Of three rows the first two share a colour, red; the last is grey.
    std::vector<uint8_t> argb;
    y4mToArgb({2, 3, 25, 1, Y4M_420, false}, {81, 81, 81, 81, 81, 81, 90, 128, 240, 128}, argb);
    EXPECT_NEAR(255, argb[4 * 3 + 2], 1);
    EXPECT_EQ(argb[4 * 5], argb[4 * 5 + 2]);
}

TEST(Y4m, MeasuredRatesAreRoundedToUsualOnes) {
    EXPECT_EQ(30U, nearestRate(30.07).numerator);
    EXPECT_EQ(25U, nearestRate(24.9).numerator);
    EXPECT_EQ(1001U, nearestRate(29.97).denominator);
    EXPECT_EQ(2U, nearestRate(7.5).denominator);
    EXPECT_EQ(18342U, nearestRate(18.342).numerator);
    EXPECT_EQ(1000U, nearestRate(18.342).denominator);
    EXPECT_EQ(17U, nearestRate(17).numerator);
}

TEST(Y4m, RatesAreReadInThreeWritings) {
    EXPECT_EQ(30, parseRate("30")->value());
    EXPECT_EQ(12.5, parseRate("25/2")->value());
    EXPECT_EQ(12.5, parseRate("25:2")->value());
    EXPECT_EQ(18.5, parseRate("18.5")->value());
    for (const char* text : {"", "0", "-1", "nan", "inf", "1/0", "0/1", "30fps", "1/", "1001", "5000"})
        EXPECT_FALSE(parseRate(text)) << text;
}

} // namespace ostrel::tests
