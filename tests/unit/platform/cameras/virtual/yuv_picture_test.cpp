// Planar pictures become B, G, R, A by BT.601's own arithmetic.
#include "pictures.h"

#include "platform/cameras/pixels/convert.h"
#include "platform/cameras/virtual/yuv_picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace ostrel::cameras;
using namespace ostrel::tests;

namespace {

// BT.601 from its luma weights.
void reference(int y, int u, int v, bool fullRange, int* bgr) {
    const double luma = fullRange ? y : (y - 16) * 255.0 / 219, range = fullRange ? 1.0 : 255.0 / 224;
    const double red = luma + 2 * (1 - 0.299) * (v - 128) * range,
                 blue = luma + 2 * (1 - 0.114) * (u - 128) * range;
    const double green = (luma - 0.299 * red - 0.114 * blue) / 0.587;
    const double values[3] = {blue, green, red};
    for (int i = 0; i < 3; ++i)
        bgr[i] = static_cast<int>(std::lround(std::fmin(255, std::fmax(0, values[i]))));
}

YuvLayout layoutOf(Chroma chroma, int width, int height, bool fullRange = false) {
    YuvLayout layout;
    layout.width = width;
    layout.height = height;
    layout.chroma = chroma;
    layout.fullRange = fullRange;
    return layout;
}

bool draw(const YuvLayout& layout, const std::vector<uint8_t>& planes, pixels::PixelPool& pool, Bgra& to) {
    return pixels::convert(yuvPicture(layout, planes.data()),
                           {pixels::OutputFormat::Bgra, to.bytes.data(), to.width, to.height, to.stride},
                           pool) == pixels::Fault::None;
}

// Planes with a Y of its own for each pixel, a U for each column of chroma, a V for each row.
std::vector<uint8_t> planesOf(const YuvLayout& layout) {
    std::vector<uint8_t> planes;
    for (int y = 0; y < layout.height; ++y)
        for (int x = 0; x < layout.width; ++x)
            planes.push_back(static_cast<uint8_t>(60 + (x * 7 + y * 13) % 120));
    if (layout.chroma == Chroma::None)
        return planes;
    for (int y = 0; y < layout.chromaHeight(); ++y)
        for (int x = 0; x < layout.chromaWidth(); ++x)
            planes.push_back(static_cast<uint8_t>(108 + x % 8 * 5));
    for (int y = 0; y < layout.chromaHeight(); ++y)
        for (int x = 0; x < layout.chromaWidth(); ++x)
            planes.push_back(static_cast<uint8_t>(110 + y % 8 * 4));
    return planes;
}

const Chroma EVERY_CHROMA[] = {Chroma::Halved, Chroma::HalvedColumns, Chroma::Full, Chroma::None};

TEST(YuvPicture, HasTheColoursOfBt601InEveryLayoutAlsoAtOddSizes) {
    pixels::PixelPool pool;
    for (const Chroma chroma : EVERY_CHROMA)
        for (const bool fullRange : {false, true})
            for (const auto& size : {std::pair<int, int>(16, 8), {17, 9}, {1, 1}, {3, 2}, {64, 5}}) {
                const YuvLayout layout = layoutOf(chroma, size.first, size.second, fullRange);
                const std::vector<uint8_t> planes = planesOf(layout);
                ASSERT_EQ(planes.size(), layout.bytes());
                Bgra got(size.first, size.second, 12);
                ASSERT_TRUE(draw(layout, planes, pool, got));
                for (int y = 0; y < got.height; ++y)
                    for (int x = 0; x < got.width; ++x) {
                        const int cx = chroma == Chroma::Full ? x : x / 2,
                                  cy = chroma == Chroma::Halved ? y / 2 : y;
                        const bool grey = chroma == Chroma::None;
                        int bgr[3];
                        reference(planes[static_cast<size_t>(y * got.width + x)],
                                  grey ? 128 : 108 + cx % 8 * 5, grey ? 128 : 110 + cy % 8 * 4, fullRange,
                                  bgr);
                        for (int c = 0; c < 3; ++c)
                            ASSERT_NEAR(got.at(x, y)[c], bgr[c], 3) << layout.code() << " " << x << ", " << y;
                        ASSERT_EQ(got.at(x, y)[3], 255);
                    }
                EXPECT_EQ(*got.at(got.width, 0), 0xCD) << "the padding is left alone";
            }
}

TEST(YuvPicture, ScalesFromEveryLayout) {
    pixels::PixelPool pool;
    const auto drawAll = [&pool] {
        for (const Chroma chroma : EVERY_CHROMA) {
            const YuvLayout layout = layoutOf(chroma, 33, 21);
            std::vector<uint8_t> planes(layout.bytes(), 128);
            std::fill_n(planes.begin(), layout.lumaBytes(), uint8_t(235));
            for (const auto& size : {std::pair<int, int>(66, 42), {10, 10}, {1, 1}, {320, 240}}) {
                Bgra got(size.first, size.second);
                ASSERT_TRUE(draw(layout, planes, pool, got));
                EXPECT_EQ(got.bytes, std::vector<uint8_t>(got.bytes.size(), 255)) << layout.code();
            }
        }
    };
    drawAll();
    const uint64_t allocations = pool.allocations();
    drawAll();
    EXPECT_EQ(pool.allocations(), allocations);
}

TEST(YuvPicture, KeepsItsColoursInTheirPlacesWhenItIsScaled) {
    pixels::PixelPool pool;
    for (const Chroma chroma : {Chroma::Halved, Chroma::HalvedColumns, Chroma::Full}) {
        const YuvLayout layout = layoutOf(chroma, 31, 23);
        std::vector<uint8_t> planes(layout.bytes(), 128);
        uint8_t* const u = planes.data() + layout.lumaBytes();
        uint8_t* const v = u + layout.chromaBytes();
        const int columns = layout.chromaWidth(), rows = layout.chromaHeight();
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < columns; ++x) {
                u[y * columns + x] = 2 * x < columns ? 90 : 170; // yellow on the left, blue on the right
                v[y * columns + x] = 2 * y < rows ? 90 : 170;    // green above, red below
            }
        for (const auto& size : {std::pair<int, int>(62, 46), {31, 46}, {12, 8}, {40, 11}}) {
            Bgra got(size.first, size.second);
            ASSERT_TRUE(draw(layout, planes, pool, got));
            for (const bool right : {false, true})
                for (const bool below : {false, true}) {
                    int bgr[3];
                    reference(128, right ? 170 : 90, below ? 170 : 90, false, bgr);
                    const uint8_t* const p = got.at(right ? got.width - 1 : 0, below ? got.height - 1 : 0);
                    for (int c = 0; c < 3; ++c)
                        EXPECT_NEAR(p[c], bgr[c], 3) << layout.code() << " " << size.first << right << below;
                }
        }
    }
}

} // namespace
