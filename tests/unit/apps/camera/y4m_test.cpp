#include "apps/camera/y4m.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace apps;
using namespace apps::cli;

TEST(Y4m, HeaderHasOneLengthForAllRatesAndComesBack) {
    const std::string plain = y4mHeaderLine({640, 480}, {30, 1});
    const std::string exact = y4mHeaderLine({640, 480}, {4294967295U, 4294967295U});
    EXPECT_EQ(exact.size(), plain.size());
    EXPECT_EQ(plain.find("YUV4MPEG2 W640 H480 F30:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED XPAD="), 0U);
    Y4mHeader header;
    EXPECT_EQ(parseY4mHeader(plain.substr(0, plain.size() - 1), header), "");
    EXPECT_EQ(header.width, 640);
    EXPECT_EQ(header.height, 480);
    EXPECT_EQ(header.rateNumerator, 30U);
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
        ASSERT_EQ(y4mFrameBytes(header), test.planes.size());
        std::vector<uint8_t> argb;
        y4mToArgb(header, test.planes, argb);
        ASSERT_EQ(argb.size(), 8U);
        for (std::size_t at = 0; at < 6; ++at)
            EXPECT_NEAR(argb[at + at / 3], test.bgr[at], 1) << test.colours << " " << at;
    }
    // Of three rows the first two share a colour, red; the last is grey.
    std::vector<uint8_t> argb;
    y4mToArgb({2, 3, 25, 1, Y4M_420, false}, {81, 81, 81, 81, 81, 81, 90, 128, 240, 128}, argb);
    EXPECT_NEAR(argb[4 * 3 + 2], 255, 1);
    EXPECT_EQ(argb[4 * 5 + 2], argb[4 * 5]);
}

TEST(Y4m, MeasuredRatesAreRoundedToUsualOnes) {
    EXPECT_EQ(nearestRate(30.07).numerator, 30U);
    EXPECT_EQ(nearestRate(24.9).numerator, 25U);
    EXPECT_EQ(nearestRate(29.97).denominator, 1001U);
    EXPECT_EQ(nearestRate(7.5).denominator, 2U);
    EXPECT_EQ(nearestRate(18.342).numerator, 18342U);
    EXPECT_EQ(nearestRate(18.342).denominator, 1000U);
    EXPECT_EQ(nearestRate(17).numerator, 17U);
}

TEST(Y4m, RatesAreReadInThreeWritings) {
    EXPECT_EQ(parseRate("30")->value(), 30);
    EXPECT_EQ(parseRate("25/2")->value(), 12.5);
    EXPECT_EQ(parseRate("25:2")->value(), 12.5);
    EXPECT_EQ(parseRate("18.5")->value(), 18.5);
    for (const char* text : {"", "0", "-1", "nan", "inf", "1/0", "0/1", "30fps", "1/", "1001", "5000"})
        EXPECT_FALSE(parseRate(text)) << text;
}

} // namespace ostrel::tests
