// What the conversions do to colours and to the position of pixels, against arithmetic done by hand.
#include "unit/processing/frames.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>

#include <functional>
#include <math.h>

using namespace ostrel::tests;
using ostrel::OVideoConverter;

namespace {

const Size SMALL = {34, 18};
// libyuv calculates with 8-bit weights.
const double CLOSE = 2;
// Chroma at the ends of its range belongs to no colour; there the weight of U in blue, cut to 2.0 by libyuv,
// shows.
const double CLOSE_AT_THE_ENDS = 3;

Rgb g_colour;

Rgb plain(Size, int, int) {
    return g_colour;
}

Bytes upsideDown(const Bytes& frame, int height) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(frame.size()) / height;
    Bytes flipped;
    for (ptrdiff_t y = height - 1; y >= 0; --y)
        flipped.insert(flipped.end(), frame.begin() + y * row, frame.begin() + (y + 1) * row);
    return flipped;
}

// From each layout to each other, in the row order that the conversion has.
Bytes rgb24ToI420(const Bytes& src, Size size) {
    Bytes dst(i420Bytes(size));
    EXPECT_EQ(OVideoConverter::RGB24ToI420(src.data(), dst.data(), size.width, size.height), 0);
    return dst;
}

Bytes argbToI420(const Bytes& src, Size size) {
    Bytes dst(i420Bytes(size));
    EXPECT_EQ(OVideoConverter::ARGBToI420(src.data(), dst.data(), size.width, size.height), 0);
    return dst;
}

Bytes yuy2ToI420(const Bytes& src, Size size) {
    Bytes dst(i420Bytes(size));
    EXPECT_EQ(OVideoConverter::YUY2ToI420(size.width, size.height, src.data(), dst.data()), 0);
    return dst;
}

Bytes i420ToYuy2(const Bytes& src, Size size) {
    Bytes dst(yuy2Bytes(size));
    EXPECT_EQ(OVideoConverter::I420ToYUY2(src.data(), dst.data(), size.width, size.height, 0), 0);
    return dst;
}

Bytes rgb24ToYuy2(const Bytes& src, Size size) {
    Bytes dst;
    EXPECT_EQ(OVideoConverter::RGB24ToYUY2(src, dst, size.width, size.height), 0);
    return dst;
}

Bytes i420ToArgb(const Bytes& src, Size size) {
    Bytes dst(argbBytes(size));
    EXPECT_EQ(OVideoConverter::I420ToARGB32(src.data(), dst.data(), size.width, size.height), 0);
    return dst;
}

Bytes yuy2ToArgb(const Bytes& src, Size size) {
    Bytes dst(argbBytes(size));
    EXPECT_EQ(OVideoConverter::YUY2ToARGB(src.data(), dst.data(), size.width, size.height), 0);
    return dst;
}

Bytes rgb24ToArgb(const Bytes& src, Size size) {
    Bytes dst(argbBytes(size));
    EXPECT_EQ(OVideoConverter::RGB24ToARGB32(src, dst, size.width, size.height), 0);
    return dst;
}

void eachPixel(Size size, const std::function<std::string(int x, int y)>& check) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const std::string wrong = check(x, y);
            ASSERT_TRUE(wrong.empty()) << "pixel " << x << ", " << y << ": " << wrong;
        }
}

void expectI420(const Bytes& frame, Size size, Picture picture) {
    eachPixel(size, [&](int x, int y) {
        return difference(i420Pixel(frame, size, x, y), picture(size, x, y), CLOSE);
    });
}

void expectYuy2(const Bytes& frame, Size size, Picture picture) {
    eachPixel(size, [&](int x, int y) {
        return difference(yuy2Pixel(frame, size, x, y), picture(size, x, y), CLOSE);
    });
}

void expectArgb(const Bytes& frame, Size size, Picture picture, double tolerance) {
    eachPixel(size, [&](int x, int y) {
        return difference(argbPixel(frame, size, x, y), picture(size, x, y), tolerance);
    });
}

void expectOpaque(const Bytes& frame) {
    for (size_t alpha = 3; alpha < frame.size(); alpha += 4)
        ASSERT_EQ(frame[alpha], 255) << "byte " << alpha;
}

} // namespace

TEST(ReferenceArithmetic, KnowsThePublishedValuesOfBt601) {
    EXPECT_TRUE(difference(Pixel{235, 128, 128}, WHITE, 0.5).empty());
    EXPECT_TRUE(difference(Pixel{16, 128, 128}, BLACK, 0.5).empty());
    EXPECT_TRUE(difference(Pixel{81, 90, 240}, RED, 0.6).empty());
    EXPECT_TRUE(difference(Pixel{145, 54, 34}, GREEN, 0.6).empty());
    EXPECT_TRUE(difference(Pixel{41, 240, 110}, BLUE, 0.6).empty());
}

TEST(ConverterColours, FromRgbLayoutsToYuvFollowBt601WithLimitedRange) {
    for (Rgb colour : testColours()) {
        SCOPED_TRACE(testing::Message() << colour.r << ", " << colour.g << ", " << colour.b);
        g_colour = colour;
        expectI420(argbToI420(drawArgb(plain, SMALL, 255), SMALL), SMALL, plain);
        expectI420(rgb24ToI420(drawRgb24(plain, SMALL), SMALL), SMALL, plain);
        expectYuy2(rgb24ToYuy2(drawRgb24(plain, SMALL), SMALL), SMALL, plain);
    }
}

TEST(ConverterColours, FromYuvLayoutsToArgbFollowBt601WithLimitedRange) {
    for (Rgb colour : testColours()) {
        SCOPED_TRACE(testing::Message() << colour.r << ", " << colour.g << ", " << colour.b);
        g_colour = colour;
        expectArgb(i420ToArgb(drawI420(plain, SMALL), SMALL), SMALL, plain, CLOSE);
        expectArgb(yuy2ToArgb(drawYuy2(plain, SMALL), SMALL), SMALL, plain, CLOSE);
    }
}

TEST(ConverterColours, OfAnyYuvTripleAreCutToTheRangeOfBytes) {
    const Size size = {2, 2};
    for (int y = 0; y < 256; y += 15)
        for (int u = 0; u < 256; u += 15)
            for (int v = 0; v < 256; v += 15) {
                const uint8_t luma = static_cast<uint8_t>(y);
                const Bytes src = {luma, luma, luma, luma, static_cast<uint8_t>(u), static_cast<uint8_t>(v)};
                const std::array<double, 3> wanted = bt601Inverse(y, u, v);
                const Rgb colour = {static_cast<int>(lround(wanted[0])), static_cast<int>(lround(wanted[1])),
                                    static_cast<int>(lround(wanted[2]))};
                ASSERT_EQ(difference(argbPixel(i420ToArgb(src, size), size, 1, 1), colour, CLOSE_AT_THE_ENDS),
                          "")
                    << y << ", " << u << ", " << v;
            }
}

TEST(ConverterColours, BetweenI420AndYuy2StayAsTheyAre) {
    for (Rgb colour : testColours()) {
        g_colour = colour;
        const Bytes i420 = drawI420(plain, SMALL);
        const Bytes yuy2 = drawYuy2(plain, SMALL);
        EXPECT_TRUE(i420ToYuy2(i420, SMALL) == yuy2);
        EXPECT_TRUE(yuy2ToI420(yuy2, SMALL) == i420);
    }
}

TEST(ConverterColours, FromRgb24ToArgbStayAsTheyAre) {
    const Bytes src = drawRgb24(quadrants, SMALL);
    EXPECT_TRUE(rgb24ToArgb(upsideDown(src, SMALL.height), SMALL) == drawArgb(quadrants, SMALL, 255));
}

TEST(ConverterColours, OfArgbDoNotDependOnAlpha) {
    EXPECT_TRUE(argbToI420(drawArgb(quadrants, SMALL, 0), SMALL) ==
                argbToI420(drawArgb(quadrants, SMALL, 255), SMALL));
}

TEST(ConverterAlpha, Is255InEveryPixelOfEvery32BitFrame) {
    for (Size size : allSizes()) {
        SCOPED_TRACE(size);
        expectOpaque(i420ToArgb(noise(i420Bytes(size), 4), size));
        expectOpaque(yuy2ToArgb(noise(yuy2Bytes(size), 5), size));
        expectOpaque(rgb24ToArgb(noise(rgb24Bytes(size), 6), size));
    }
}

TEST(ConverterOrientation, RedFirstRowOfRgb24IsAtTheBottomOfI420) {
    const Bytes i420 = rgb24ToI420(drawRgb24(redTopRow, SMALL), SMALL);
    for (int y = 0; y < SMALL.height; ++y) {
        const double luma = bt601(y == SMALL.height - 1 ? RED : BLUE).y;
        ASSERT_NEAR(i420Pixel(i420, SMALL, 7, y).y, luma, CLOSE) << "row " << y;
    }
}

TEST(ConverterOrientation, RedFirstRowOfRgb24IsAtTheBottomOfArgb) {
    const Bytes argb = rgb24ToArgb(drawRgb24(redTopRow, SMALL), SMALL);
    for (int y = 0; y < SMALL.height; ++y) {
        const Rgb wanted = y == SMALL.height - 1 ? RED : BLUE;
        ASSERT_EQ(difference(argbPixel(argb, SMALL, 7, y), wanted, 0), "") << "row " << y;
    }
}

TEST(ConverterOrientation, RedFirstRowOfRgb24IsAtTheTopOfYuy2) {
    const Bytes direct = rgb24ToYuy2(drawRgb24(redTopRow, SMALL), SMALL);
    Bytes chosen;
    OVideoConverter::convertToYUY2(drawRgb24(redTopRow, SMALL), chosen, SMALL.width, SMALL.height);
    for (int y = 0; y < SMALL.height; ++y) {
        const double luma = bt601(y == 0 ? RED : BLUE).y;
        ASSERT_NEAR(yuy2Pixel(direct, SMALL, 7, y).y, luma, CLOSE) << "row " << y;
        ASSERT_NEAR(yuy2Pixel(chosen, SMALL, 7, y).y, luma, CLOSE) << "row " << y;
    }
}

TEST(ConverterOrientation, OtherLayoutsKeepTheirFirstRowOnTop) {
    const double red = bt601(RED).y;
    EXPECT_NEAR(argbToI420(drawArgb(redTopRow, SMALL, 255), SMALL)[0], red, CLOSE);
    EXPECT_NEAR(yuy2ToI420(drawYuy2(redTopRow, SMALL), SMALL)[0], red, CLOSE);
    EXPECT_NEAR(i420ToYuy2(drawI420(redTopRow, SMALL), SMALL)[0], red, CLOSE);
    EXPECT_EQ(difference(argbPixel(yuy2ToArgb(drawYuy2(redTopRow, SMALL), SMALL), SMALL, 0, 0), RED, CLOSE),
              "");
    EXPECT_EQ(difference(argbPixel(i420ToArgb(drawI420(quadrants, SMALL), SMALL), SMALL, 0, 0), RED, CLOSE),
              "");
}

TEST(ConverterChroma, StaysInItsQuadrantThroughEveryConversion) {
    // Both halves are even, so that no chroma sample belongs to two quadrants.
    const Size size = {36, 20};
    const Bytes bottomUp = upsideDown(drawRgb24(quadrants, size), size.height);
    expectI420(rgb24ToI420(bottomUp, size), size, quadrants);
    expectI420(argbToI420(drawArgb(quadrants, size, 255), size), size, quadrants);
    expectI420(yuy2ToI420(drawYuy2(quadrants, size), size), size, quadrants);
    expectYuy2(i420ToYuy2(drawI420(quadrants, size), size), size, quadrants);
    expectYuy2(rgb24ToYuy2(drawRgb24(quadrants, size), size), size, quadrants);
    expectArgb(i420ToArgb(drawI420(quadrants, size), size), size, quadrants, 3);
    expectArgb(yuy2ToArgb(drawYuy2(quadrants, size), size), size, quadrants, 3);
    expectArgb(rgb24ToArgb(bottomUp, size), size, quadrants, 0);
}
