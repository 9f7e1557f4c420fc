// What a person sees of the test pattern, and what drawing it costs.
#include "pictures.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

using namespace ostrel::tests;

namespace {

struct Named {
    const char* name;
    int red, green, blue;
};

const Named BARS[] = {{"white", 255, 255, 255}, {"yellow", 255, 255, 0},  {"cyan", 0, 255, 255},
                      {"green", 0, 255, 0},     {"magenta", 255, 0, 255}, {"red", 255, 0, 0},
                      {"blue", 0, 0, 255},      {"black", 0, 0, 0}};

void expectBars(const Bgra& picture, int tolerance) {
    for (int bar = 0; bar < 8; ++bar) {
        const uint8_t* p = picture.at((2 * bar + 1) * picture.width / 16, picture.height * 2 / 5);
        EXPECT_NEAR(p[0], BARS[bar].blue, tolerance) << BARS[bar].name;
        EXPECT_NEAR(p[1], BARS[bar].green, tolerance) << BARS[bar].name;
        EXPECT_NEAR(p[2], BARS[bar].red, tolerance) << BARS[bar].name;
        EXPECT_EQ(p[3], 255);
    }
}

TEST(PatternPicture, ShowsEightBarsFromWhiteToBlackAtFortyPercentOfTheHeight) {
    expectBars(pattern(1280, 720, 1, 2), 0);
    expectBars(pattern(640, 480, 1, 2), 0);
    expectBars(pattern(320, 240, 1, 2), 0);
    expectBars(pattern(160, 120, 1, 2), 0);
}

TEST(PatternPicture, KeepsItsColoursWhenScaled) {
    expectBars(pattern(1280, 720, 1, 2, 320, 240), 3);
    expectBars(pattern(320, 240, 1, 2, 1280, 720), 3);
    expectBars(pattern(640, 480, 1, 2, 333, 251), 3);
}

TEST(PatternPicture, IsOpaqueEverywhereAtAnySize) {
    for (const auto& size :
         {std::pair<int, int>(320, 240), {160, 120}, {640, 480}, {321, 239}, {1, 1}, {7, 500}}) {
        const Bgra picture = pattern(320, 240, 99, 2, size.first, size.second);
        ASSERT_FALSE(picture.bytes.empty());
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x)
                ASSERT_EQ(picture.at(x, y)[3], 255) << x << ", " << y;
    }
}

TEST(PatternPicture, WritesNothingBehindItsRows) {
    for (const auto& size : {std::pair<int, int>(320, 240), {200, 150}}) {
        Bgra picture(size.first, size.second, 24);
        ostrel::cameras::PatternPainter painter(320, 240);
        ASSERT_TRUE(
            painter.paint({1, 2}, picture.bytes.data(), picture.width, picture.height, picture.stride));
        for (int y = 0; y < picture.height; ++y)
            for (int i = 0; i < 24; ++i)
                ASSERT_EQ(*(picture.at(picture.width, y) + i), 0xCD) << "row " << y;
    }
}

// The digits are drawn in white on the lower part's ground; two numbers that differ look different there.
TEST(PatternPicture, ShowsCounterAndClockInTheLowerPart) {
    const auto differsIn = [](const Bgra& a, const Bgra& b, int firstBand, int endBand) {
        return !std::equal(a.at(0, firstBand * a.height / 30), a.at(0, endBand * a.height / 30),
                           b.at(0, firstBand * a.height / 30));
    };
    for (const auto& size : {std::pair<int, int>(320, 240), {1280, 720}}) {
        const Bgra one = pattern(size.first, size.second, 1000, 2000);
        const Bgra other = pattern(size.first, size.second, 1001, 2000);
        const Bgra later = pattern(size.first, size.second, 1000, 2001);
        EXPECT_TRUE(differsIn(one, other, 20, 24)) << "the counter's digits";
        EXPECT_FALSE(differsIn(one, other, 24, 28)) << "the clock's digits";
        EXPECT_TRUE(differsIn(one, later, 24, 28)) << "the clock's digits";
        EXPECT_FALSE(differsIn(one, later, 16, 24)) << "mark and counter";
        EXPECT_TRUE(differsIn(one, other, 17, 19)) << "the moving mark";
        EXPECT_FALSE(differsIn(one, other, 2, 14)) << "bars stand still";
    }
}

TEST(PatternPicture, TheMarkGoesFromTheLeftToTheRight) {
    const auto markLeft = [](const Bgra& picture) {
        for (int x = 0; x < picture.width; ++x)
            if (picture.at(x, picture.height * 18 / 30)[2] == 255)
                return x;
        return -1;
    };
    int last = -1;
    for (uint32_t counter = 120; counter < 240; ++counter) {
        const int left = markLeft(pattern(640, 480, counter, 0));
        ASSERT_GT(left, last);
        last = left;
    }
    EXPECT_EQ(last, 640 - 640 / 20);
    EXPECT_EQ(markLeft(pattern(640, 480, 240, 0)), 0);
}

TEST(PatternPicture, IsNotSymmetricInTheSignThatSaysTop) {
    const Bgra picture = pattern(640, 480, 1, 2);
    int mirrored = 0, flipped = 0;
    const int top = 480 * 3 / 30, bottom = 480 * 10 / 30;
    for (int y = top; y < bottom; ++y)
        for (int x = 240; x < 400; ++x) {
            mirrored += picture.at(x, y)[0] != picture.at(639 - x, y)[0];
            flipped += picture.at(x, y)[0] != picture.at(x, top + bottom - 1 - y)[0];
        }
    EXPECT_GT(mirrored, 100);
    EXPECT_GT(flipped, 100);
}

TEST(PatternPicture, DrawsTheSmallestAndOddShapes) {
    for (const auto& size : {std::pair<int, int>(16, 16), {16, 8192}, {8192, 16}, {18, 16}})
        EXPECT_FALSE(pattern(size.first, size.second, 0xFFFFFFFFu, 0xFFFFFFFFu).bytes.empty());
}

TEST(PatternPicture, AllocatesNothingInTheSteadyState) {
    ostrel::cameras::PatternPainter painter(320, 240);
    EXPECT_EQ(painter.allocations(), 0u) << "nothing before the first frame is taken";
    Bgra same(320, 240), other(200, 100);
    for (uint32_t i = 0; i < 100; ++i) {
        ASSERT_TRUE(painter.paint({i, i}, same.bytes.data(), same.width, same.height, same.stride));
        ASSERT_TRUE(painter.paint({i, i}, other.bytes.data(), other.width, other.height, other.stride));
    }
    EXPECT_EQ(painter.allocations(), 3u) << "the standing part, a picture to scale from and its colours";
}

TEST(PatternPicture, IsDrawnByTwoThreadsAtOnce) {
    ostrel::cameras::PatternPainter painter(320, 240);
    bool right[2] = {true, true};
    const auto paint = [&](int which) {
        Bgra picture(which ? 320 : 400, which ? 240 : 300);
        for (uint32_t i = 0; i < 200; ++i) {
            const uint32_t stamp = i * 2 + static_cast<uint32_t>(which);
            uint32_t counter = 0, clock = 0;
            right[which] = right[which] &&
                           painter.paint({stamp, ~stamp}, picture.bytes.data(), picture.width, picture.height,
                                         picture.stride) &&
                           decode(picture, counter, clock) && counter == stamp && clock == ~stamp;
        }
    };
    std::thread other(paint, 1);
    paint(0);
    other.join();
    EXPECT_TRUE(right[0]);
    EXPECT_TRUE(right[1]);
}

TEST(PatternPicture, RefusesASizeThatCannotBeScaledTo) {
    ostrel::cameras::PatternPainter painter(320, 240);
    uint8_t pixel[4] = {};
    EXPECT_FALSE(painter.paint({1, 2}, pixel, 0, 240, 4));
    EXPECT_FALSE(painter.paint({1, 2}, pixel, 320, -240, 4));
}

} // namespace
