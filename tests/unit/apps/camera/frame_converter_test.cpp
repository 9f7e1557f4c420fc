// Conversions between all layouts, against arithmetic done here.
#include "apps/camera/frame_converter.h"
#include "frames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>

namespace {

using namespace ostrel;
using namespace ostrel::apps;
using namespace ostrel::apps::cli;
using tests::flagArgb;
using tests::flagRgb24;
using tests::greyI420;

const Layout LAYOUTS[] = {Layout::Argb, Layout::Rgb24, Layout::Yuy2, Layout::I420};

// A frame of one colour in any layout, BT.601 with limited range.
Bytes plain(Layout layout, const Size& size, int red, int green, int blue) {
    const auto byte = [](double value) { return static_cast<uint8_t>(std::lround(value)); };
    const uint8_t y = byte(16 + (65.481 * red + 128.553 * green + 24.966 * blue) / 255);
    const uint8_t u = byte(128 + (-37.797 * red - 74.203 * green + 112.0 * blue) / 255);
    const uint8_t v = byte(128 + (112.0 * red - 93.786 * green - 18.214 * blue) / 255);
    const uint8_t r = byte(red);
    const uint8_t g = byte(green);
    const uint8_t b = byte(blue);
    const std::size_t pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    Bytes frame;
    const auto repeat = [&frame](std::size_t times, std::initializer_list<uint8_t> bytes) {
        for (; times > 0; --times)
            frame.insert(frame.end(), bytes);
    };
    switch (layout) {
    case Layout::Argb:
        repeat(pixels, {b, g, r, 255});
        break;
    case Layout::Rgb24:
        repeat(pixels, {b, g, r});
        break;
    case Layout::Yuy2:
        repeat(pixels / 2, {y, u, y, v});
        break;
    case Layout::I420:
        repeat(pixels, {y});
        repeat(pixels / 4, {u});
        repeat(pixels / 4, {v});
        break;
    }
    return frame;
}

int largestDifference(const Bytes& a, const Bytes& b) {
    int largest = 0;
    for (std::size_t at = 0; at < a.size(); ++at)
        largest = std::max(largest, std::abs(a[at] - b[at]));
    return largest;
}

TEST(FrameConverter, EveryLayoutBecomesEveryOtherInTheRightColours) {
    const Size size = {34, 18};
    const int colours[][3] = {{0, 0, 0},   {255, 255, 255}, {255, 0, 0},  {0, 255, 0},
                              {0, 0, 255}, {128, 128, 128}, {10, 200, 90}};
    for (const Layout from : LAYOUTS)
        for (const Layout to : LAYOUTS)
            for (const auto& colour : colours) {
                FrameConverter converter(size, from, to);
                const Bytes result = converter.apply(plain(from, size, colour[0], colour[1], colour[2]));
                const Bytes expected = plain(to, size, colour[0], colour[1], colour[2]);
                ASSERT_EQ(result.size(), expected.size());
                EXPECT_LE(largestDifference(expected, result), 3)
                    << layoutName(from) << " to " << layoutName(to) << " of " << colour[0] << " " << colour[1]
                    << " " << colour[2];
            }
}

// Whether the frame has red above blue, read through the converter to ARGB that other tests check.
TEST(FrameConverter, TheTopRowStaysOnTopThroughEveryPair) {
    const Size size = {16, 8};
    for (const Layout from : LAYOUTS)
        for (const Layout to : LAYOUTS) {
            FrameConverter there(size, Layout::Argb, from);
            FrameConverter converter(size, from, to);
            FrameConverter back(size, to, Layout::Argb);
            const Bytes source = there.apply(flagArgb(16, 8));
            const Bytes middle = converter.apply(source);
            const Bytes result = back.apply(middle);
            const std::size_t top = 4 * (1 * 16 + 8);
            const std::size_t bottom = 4 * (6 * 16 + 8);
            EXPECT_GT(result[top + 2], 200) << layoutName(from) << " to " << layoutName(to); // red
            EXPECT_LT(result[top], 60);
            EXPECT_GT(result[bottom], 200); // blue
            EXPECT_LT(result[bottom + 2], 60);
            EXPECT_GT(result[4 * 16 * 3 + 1], 100); // the white column is on the left
        }
}

// I420 of odd sides has its colour planes rounded up; the last row and column come back as they went.
TEST(FrameConverter, OddSizesKeepEveryPixel) {
    const Size size = {35, 17};
    for (const Layout layout : {Layout::Argb, Layout::Rgb24}) {
        FrameConverter there(size, layout, Layout::I420);
        FrameConverter back(size, Layout::I420, layout);
        const Bytes frame = plain(layout, size, 10, 200, 90);
        const Bytes middle = there.apply(frame);
        ASSERT_EQ(middle.size(), 35U * 17 + 2 * 18 * 9);
        EXPECT_LE(largestDifference(Bytes(35 * 17, plain(Layout::I420, {2, 2}, 10, 200, 90)[0]), middle), 1);
        const Bytes result = back.apply(middle);
        ASSERT_EQ(result.size(), frame.size());
        EXPECT_LE(largestDifference(frame, result), 3) << layoutName(layout);
    }
}

TEST(FrameConverter, SameLayoutHandsTheFrameThrough) {
    for (const Layout layout : LAYOUTS) {
        FrameConverter converter({16, 8}, layout, layout);
        const Bytes frame(frameBytes(layout, {16, 8}), 77);
        EXPECT_EQ(&converter.apply(frame), &frame);
    }
}

TEST(FrameConverter, KeepsItsBufferFromFrameToFrame) {
    for (const Layout from : LAYOUTS)
        for (const Layout to : LAYOUTS) {
            FrameConverter converter({16, 8}, from, to);
            const Bytes frame(frameBytes(from, {16, 8}), 77);
            const uint8_t* first = converter.apply(frame).data();
            EXPECT_EQ(converter.apply(frame).data(), first) << layoutName(from) << " to " << layoutName(to);
        }
}

TEST(FrameScaler, ScalesEveryPairOfLayoutsAndKeepsColoursInPlace) {
    for (const Layout from : LAYOUTS)
        for (const Layout to : LAYOUTS) {
            FrameConverter there({320, 240}, Layout::Argb, from);
            FrameScaler scaler(VIDEO_QUALITY_LD, from, VIDEO_QUALITY_HD, to, SCALE_METHOD_BILINEAR);
            FrameConverter back({1280, 720}, to, Layout::Argb);
            const Bytes source = there.apply(flagArgb(320, 240));
            const Bytes scaled = scaler.apply(source);
            ASSERT_EQ(scaled.size(), frameBytes(to, {1280, 720}));
            const Bytes result = back.apply(scaled);
            EXPECT_GT(result[4 * (100 * 1280 + 600) + 2], 240)
                << layoutName(from) << " to " << layoutName(to);
            EXPECT_GT(result[4 * (600 * 1280 + 600)], 240);
        }
}

} // namespace
