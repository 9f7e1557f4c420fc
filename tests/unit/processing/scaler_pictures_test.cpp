// What a person sees of a scaled frame: where the colours are, and what each filter does, against arithmetic
// done by hand.
#include "unit/processing/frames.h"

#include <ostrel/processing.h>

#include <gtest/gtest.h>

#include <set>
#include <stdlib.h>

using namespace ostrel::tests;
using namespace ostrel;

namespace {

const Size LEVELS[] = {{320, 240}, {640, 480}, {1280, 720}};
const ScaleMethod METHODS[] = {SCALE_METHOD_NONE, SCALE_METHOD_BILINEAR, SCALE_METHOD_BOX};

VIDEO_QUALITY level(int number) {
    return static_cast<VIDEO_QUALITY>(number);
}

bool besideACross(Size size, int x, int y, int margin) {
    return abs(x - size.width / 2) <= margin || abs(y - size.height / 2) <= margin;
}

// Every pixel that is not within a few of the cross between the quadrants has the colour of its quadrant,
// give or take what rounding it and cutting off its average cost.
void expectQuadrants(const Bytes& frame, Size size, Pixel (*pixelOf)(const Bytes&, Size, int, int)) {
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            if (besideACross(size, x, y, 8))
                continue;
            ASSERT_EQ(difference(pixelOf(frame, size, x, y), quadrants(size, x, y), 2), "")
                << "pixel " << x << ", " << y;
        }
}

Bytes scaled(Bytes src, int from, int to, ScaleMethod method) {
    Bytes dst;
    EXPECT_EQ(OVideoScaler::scaleI420Frame(level(from), src, level(to), dst, method), 0);
    return dst;
}

// The bytes of a block of the luma plane.
std::vector<int> block(const Bytes& frame, int stride, int left, int top, int width, int height) {
    std::vector<int> values;
    for (int y = top; y < top + height; ++y)
        for (int x = left; x < left + width; ++x)
            values.push_back(frame.at(static_cast<size_t>(y * stride + x)));
    return values;
}

double mean(const std::vector<int>& values) {
    double sum = 0;
    for (int value : values)
        sum += value;
    return sum / static_cast<double>(values.size());
}

} // namespace

TEST(ScaledI420, KeepsFourColouredQuadrantsInPlace) {
    for (int from = 0; from < 3; ++from)
        for (int to = 0; to < 3; ++to)
            for (ScaleMethod method : METHODS) {
                SCOPED_TRACE(testing::Message() << from << " to " << to << ", method " << method);
                expectQuadrants(scaled(drawI420(quadrants, LEVELS[from]), from, to, method), LEVELS[to],
                                i420Pixel);
            }
}

TEST(ScaledYUY2, KeepsFourColouredQuadrantsInPlace) {
    for (int from = 0; from < 3; ++from)
        for (int to = 0; to < 3; ++to)
            for (ScaleMethod method : METHODS) {
                SCOPED_TRACE(testing::Message() << from << " to " << to << ", method " << method);
                Bytes src = drawYuy2(quadrants, LEVELS[from]);
                Bytes dst;
                EXPECT_EQ(OVideoScaler::scaleYUY2Frame(level(from), src, level(to), dst, method), 0);
                expectQuadrants(dst, LEVELS[to], yuy2Pixel);
            }
}

TEST(ScaledWithNone, TakesOneSourcePixelForEachPixel) {
    const Bytes src = noise(i420Bytes(LEVELS[1]), 1);
    const Bytes dst = scaled(src, 1, 0, SCALE_METHOD_NONE);
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x) {
            const std::vector<int> candidates = block(src, 640, x * 2, y * 2, 2, 2);
            const int value = dst[static_cast<size_t>(y * 320 + x)];
            ASSERT_TRUE(std::count(candidates.begin(), candidates.end(), value) > 0) << x << ", " << y;
        }
}

TEST(ScaledWithNone, InventsNoValuesWhenItEnlarges) {
    Bytes src = noise(i420Bytes(LEVELS[0]), 2);
    for (uint8_t& byte : src)
        byte = byte < 128 ? 20 : 220;
    const Bytes dst = scaled(src, 0, 2, SCALE_METHOD_NONE);
    EXPECT_EQ(std::set<int>(dst.begin(), dst.end()), std::set<int>({20, 220}));
}

TEST(ScaledWithBilinear, BlendsNeighboursWhenItEnlarges) {
    Bytes src = noise(i420Bytes(LEVELS[0]), 2);
    for (uint8_t& byte : src)
        byte = byte < 128 ? 20 : 220;
    const Bytes dst = scaled(src, 0, 2, SCALE_METHOD_BILINEAR);
    const std::set<int> values(dst.begin(), dst.end());
    EXPECT_GT(values.size(), 10u);
    EXPECT_GE(*values.begin(), 20);
    EXPECT_LE(*values.rbegin(), 220);
}

TEST(ScaledWithBox, AveragesTheFourPixelsThatBecomeOne) {
    const Bytes src = noise(i420Bytes(LEVELS[1]), 3);
    const Bytes dst = scaled(src, 1, 0, SCALE_METHOD_BOX);
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x)
            ASSERT_NEAR(dst[static_cast<size_t>(y * 320 + x)], mean(block(src, 640, x * 2, y * 2, 2, 2)), 1)
                << x << ", " << y;
}

TEST(ScaledWithBox, AveragesTheTwelvePixelsThatBecomeOneBetweenDifferentShapes) {
    const Bytes src = noise(i420Bytes(LEVELS[2]), 4);
    const Bytes dst = scaled(src, 2, 0, SCALE_METHOD_BOX);
    for (int y = 0; y < 240; ++y)
        for (int x = 0; x < 320; ++x)
            ASSERT_NEAR(dst[static_cast<size_t>(y * 320 + x)], mean(block(src, 1280, x * 4, y * 3, 4, 3)), 1)
                << x << ", " << y;
}
