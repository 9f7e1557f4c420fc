// Every layout against arithmetic of the tests' own, from the definitions of the colour standards.
#include "platform/cameras/pixels/bgra.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <utility>
#include <vector>

namespace {

std::size_t largeAllocations = 0;

// Counts what is as large as a picture, whoever asks for it.
void* counted(std::size_t alignment, std::size_t size) {
    if (size > 16384)
        ++largeAllocations;
    void* memory = nullptr;
    return posix_memalign(&memory, alignment, size ? size : 1) == 0 ? memory : nullptr;
}

} // namespace

extern "C" void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return counted(alignment, size);
}
void* operator new[](std::size_t size) {
    if (void* const memory = counted(alignof(std::max_align_t), size))
        return memory;
    throw std::bad_alloc();
}
void operator delete[](void* memory) noexcept {
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace ostrel {
namespace tests {

using cameras::pixels::Layout;
using cameras::pixels::minimumStride;
using cameras::pixels::neededBytes;
using cameras::pixels::Picture;
using cameras::pixels::PixelPool;
using cameras::pixels::toBgra;
using cameras::pixels::YuvMatrix;

namespace {

struct Colour {
    int r, g, b;
};
struct Yuv {
    int y, u, v;
};

// Red on the left above, green on the right above, blue and a light grey below: turned, mirrored or with
// colours exchanged, none of the four stays where it is.
const std::array<Colour, 4> kQuadrants = {{{200, 30, 40}, {20, 180, 60}, {30, 50, 210}, {190, 190, 190}}};

Colour colourAt(int x, int y, int width, int height) {
    return kQuadrants[static_cast<size_t>((y >= height / 2 ? 2 : 0) + (x >= width / 2 ? 1 : 0))];
}

uint8_t byte(double value) {
    return static_cast<uint8_t>(std::lround(std::min(255.0, std::max(0.0, value))));
}

// From the two weights by which each standard defines its luma.
Yuv yuvOf(const Colour& c, YuvMatrix matrix) {
    double kr = 0.299, kb = 0.114;
    if (matrix == YuvMatrix::Bt709 || matrix == YuvMatrix::Bt709Full) {
        kr = 0.2126;
        kb = 0.0722;
    } else if (matrix == YuvMatrix::Bt2020 || matrix == YuvMatrix::Bt2020Full) {
        kr = 0.2627;
        kb = 0.0593;
    }
    const bool full =
        matrix == YuvMatrix::Bt601Full || matrix == YuvMatrix::Bt709Full || matrix == YuvMatrix::Bt2020Full;
    const double y = kr * c.r + (1 - kr - kb) * c.g + kb * c.b;
    const double u = (c.b - y) / (2 * (1 - kb)), v = (c.r - y) / (2 * (1 - kr));
    const double lumaScale = full ? 1 : 219.0 / 255, chromaScale = full ? 1 : 224.0 / 255;
    return {byte((full ? 0 : 16) + y * lumaScale), byte(128 + u * chromaScale), byte(128 + v * chromaScale)};
}

// A picture of the four quadrants in any layout, with rows that are `padding` longer than they need be, and
// with 0xEE wherever no pixel is.
struct Drawn {
    std::vector<uint8_t> bytes;
    Picture picture;

    Drawn(Layout layout, YuvMatrix matrix, int width, int height, int padding) {
        picture.layout = layout;
        picture.matrix = matrix;
        picture.width = width;
        picture.height = height;
        picture.stride = minimumStride(layout, width) + padding;
        bytes.assign(neededBytes(layout, width, height, picture.stride), 0xEE);
        picture.data = bytes.data();
        picture.bytes = bytes.size();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                put(x, y);
    }

private:
    void set(size_t at, int value) { bytes.at(at) = static_cast<uint8_t>(value); }

    void put(int x, int y) {
        const Colour c = colourAt(x, y, picture.width, picture.height);
        const Yuv yuv = yuvOf(c, picture.matrix);
        const auto stride = static_cast<size_t>(picture.stride);
        const size_t row = static_cast<size_t>(y) * stride, column = static_cast<size_t>(x);
        const size_t pair = row + column / 2 * 4, second = column % 2;
        const size_t luma = stride * static_cast<size_t>(picture.height);
        const size_t chromaRows = (static_cast<size_t>(picture.height) + 1) / 2;
        const size_t half = static_cast<size_t>(y / 2);
        switch (picture.layout) {
        case Layout::Yuyv:
            set(pair + 2 * second, yuv.y), set(pair + 1, yuv.u), set(pair + 3, yuv.v);
            break;
        case Layout::Uyvy:
            set(pair + 2 * second + 1, yuv.y), set(pair, yuv.u), set(pair + 2, yuv.v);
            break;
        case Layout::Yvyu:
            set(pair + 2 * second, yuv.y), set(pair + 3, yuv.u), set(pair + 1, yuv.v);
            break;
        case Layout::Vyuy:
            set(pair + 2 * second + 1, yuv.y), set(pair + 2, yuv.u), set(pair, yuv.v);
            break;
        case Layout::Nv12:
        case Layout::Nv21: {
            const size_t chroma = luma + half * stride + column / 2 * 2;
            const size_t u = picture.layout == Layout::Nv12 ? 0 : 1;
            set(row + column, yuv.y), set(chroma + u, yuv.u), set(chroma + 1 - u, yuv.v);
            break;
        }
        case Layout::I420:
        case Layout::Yv12: {
            const size_t first = luma + half * (stride / 2) + column / 2;
            const size_t other = first + chromaRows * (stride / 2);
            const bool uFirst = picture.layout == Layout::I420;
            set(row + column, yuv.y), set(uFirst ? first : other, yuv.u), set(uFirst ? other : first, yuv.v);
            break;
        }
        case Layout::I422: {
            const size_t u = luma + static_cast<size_t>(y) * (stride / 2) + column / 2;
            set(row + column, yuv.y), set(u, yuv.u);
            set(u + static_cast<size_t>(picture.height) * (stride / 2), yuv.v);
            break;
        }
        case Layout::Rgb:
            set(row + 3 * column, c.r), set(row + 3 * column + 1, c.g), set(row + 3 * column + 2, c.b);
            break;
        case Layout::Bgr:
            set(row + 3 * column, c.b), set(row + 3 * column + 1, c.g), set(row + 3 * column + 2, c.r);
            break;
        case Layout::Bgrx:
            set(row + 4 * column, c.b), set(row + 4 * column + 1, c.g), set(row + 4 * column + 2, c.r);
            set(row + 4 * column + 3, 0);
            break;
        case Layout::Xrgb:
            set(row + 4 * column, 0), set(row + 4 * column + 1, c.r), set(row + 4 * column + 2, c.g);
            set(row + 4 * column + 3, c.b);
            break;
        case Layout::Rgbx:
            set(row + 4 * column, c.r), set(row + 4 * column + 1, c.g), set(row + 4 * column + 2, c.b);
            set(row + 4 * column + 3, 0);
            break;
        case Layout::Rgb565: {
            const int value = (c.r >> 3) << 11 | (c.g >> 2) << 5 | c.b >> 3;
            set(row + 2 * column, value & 0xFF), set(row + 2 * column + 1, value >> 8);
            break;
        }
        case Layout::Grey:
            set(row + column, c.g);
            break;
        case Layout::Jpeg:
            break;
        }
    }
};

const Layout kAllRaw[] = {Layout::Yuyv, Layout::Uyvy, Layout::Yvyu,   Layout::Vyuy,
                          Layout::Nv12, Layout::Nv21, Layout::I420,   Layout::Yv12,
                          Layout::I422, Layout::Rgb,  Layout::Bgr,    Layout::Bgrx,
                          Layout::Xrgb, Layout::Rgbx, Layout::Rgb565, Layout::Grey};

bool isYuv(Layout layout) {
    return layout <= Layout::I422;
}

int tolerance(const Picture& picture) {
    if (picture.layout == Layout::Rgb565)
        return 8; // five bits
    // libyuv's factor for U in blue ends at 2.0, where these matrices want 2.11 and 2.14.
    if (picture.matrix == YuvMatrix::Bt709 || picture.matrix == YuvMatrix::Bt2020)
        return 10;
    return isYuv(picture.layout) ? 4 : 0;
}

// Compares the middle of each quadrant, an eighth of the picture away from every edge, and that A is 255
// everywhere and nothing outside of the rows was written.
void expectQuadrants(const Drawn& drawn, int width, int height, PixelPool& pool) {
    const int stride = width * 4 + 12;
    std::vector<uint8_t> bgra(static_cast<size_t>(stride * height), 0xAB);
    ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), width, height, stride, pool));
    const int allowed = tolerance(drawn.picture);
    for (int y = 0; y < height; ++y) {
        const uint8_t* row = bgra.data() + y * stride;
        for (int i = width * 4; i < stride; ++i)
            ASSERT_EQ(row[i], 0xAB) << "written behind row " << y;
        const int inY = y % ((height + 1) / 2);
        for (int x = 0; x < width; ++x) {
            ASSERT_EQ(row[4 * x + 3], 255) << x << ',' << y;
            const int inX = x % ((width + 1) / 2);
            if (inX < width / 8 || inX >= width / 2 - width / 8 || inY < height / 8 ||
                inY >= height / 2 - height / 8)
                continue;
            Colour c = colourAt(x, y, width, height);
            if (drawn.picture.layout == Layout::Grey)
                c.r = c.b = c.g;
            ASSERT_NEAR(row[4 * x], c.b, allowed) << x << ',' << y;
            ASSERT_NEAR(row[4 * x + 1], c.g, allowed) << x << ',' << y;
            ASSERT_NEAR(row[4 * x + 2], c.r, allowed) << x << ',' << y;
        }
    }
}

} // namespace

class EveryLayout : public testing::TestWithParam<Layout> {
protected:
    PixelPool pool;
};

TEST_P(EveryLayout, ConvertsAtItsOwnSize) {
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 64, 48, 0), 64, 48, pool);
}

TEST_P(EveryLayout, LeavesOutThePaddingOfItsRows) {
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 64, 48, 16), 64, 48, pool);
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 64, 48, 7), 64, 48, pool);
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 64, 48, 16), 32, 24, pool);
}

TEST_P(EveryLayout, ScalesUpAndDownAndOutOfShape) {
    const Drawn drawn(GetParam(), YuvMatrix::Bt601, 64, 48, 0);
    expectQuadrants(drawn, 128, 96, pool);
    expectQuadrants(drawn, 32, 24, pool);
    expectQuadrants(drawn, 16, 12, pool);
    expectQuadrants(drawn, 90, 30, pool);
    expectQuadrants(drawn, 40, 100, pool);
}

TEST_P(EveryLayout, TakesOddSizes) {
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 63, 47, 0), 63, 47, pool);
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 63, 47, 3), 31, 95, pool);
    expectQuadrants(Drawn(GetParam(), YuvMatrix::Bt601, 1, 1, 0), 1, 1, pool);
}

TEST_P(EveryLayout, RefusesAPictureThatIsOneByteShort) {
    Drawn drawn(GetParam(), YuvMatrix::Bt601, 64, 48, 0);
    --drawn.picture.bytes;
    std::vector<uint8_t> bgra(64 * 48 * 4);
    EXPECT_FALSE(toBgra(drawn.picture, bgra.data(), 64, 48, 256, pool));
}

TEST_P(EveryLayout, AllocatesNoPixelMemoryFrameByFrame) {
    const Drawn drawn(GetParam(), YuvMatrix::Bt709, 320, 240, 0);
    std::vector<uint8_t> bgra(640 * 480 * 4);
    ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), 640, 480, 2560, pool));
    ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), 320, 240, 2560, pool));
    ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), 90, 70, 2560, pool));
    const size_t before = largeAllocations;
    EXPECT_GT(before, 0u); // the counting works
    for (int i = 0; i < 10; ++i) {
        ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), 640, 480, 2560, pool));
        ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), 320, 240, 2560, pool));
        ASSERT_TRUE(toBgra(drawn.picture, bgra.data(), 90, 70, 2560, pool));
    }
    EXPECT_EQ(largeAllocations, before);
}

INSTANTIATE_TEST_SUITE_P(Raw, EveryLayout, testing::ValuesIn(kAllRaw));

TEST(ToBgra, KnowsEveryMatrixAndRange) {
    PixelPool pool;
    for (const YuvMatrix matrix : {YuvMatrix::Bt601, YuvMatrix::Bt601Full, YuvMatrix::Bt709,
                                   YuvMatrix::Bt709Full, YuvMatrix::Bt2020, YuvMatrix::Bt2020Full}) {
        for (const Layout layout : kAllRaw) {
            if (!isYuv(layout))
                continue;
            SCOPED_TRACE(testing::Message()
                         << "matrix " << static_cast<int>(matrix) << " layout " << static_cast<int>(layout));
            expectQuadrants(Drawn(layout, matrix, 64, 48, 4), 64, 48, pool);
            expectQuadrants(Drawn(layout, matrix, 64, 48, 4), 48, 32, pool);
        }
    }
}

TEST(ToBgra, RefusesSizesThatMakeNoSense) {
    PixelPool pool;
    const Drawn drawn(Layout::Yuyv, YuvMatrix::Bt601, 64, 48, 0);
    std::vector<uint8_t> bgra(64 * 48 * 4);
    EXPECT_FALSE(toBgra(drawn.picture, bgra.data(), 0, 48, 256, pool));
    EXPECT_FALSE(toBgra(drawn.picture, bgra.data(), 64, -1, 256, pool));
    EXPECT_FALSE(toBgra(drawn.picture, bgra.data(), 64, 48, 255, pool));
    EXPECT_FALSE(toBgra(drawn.picture, bgra.data(), 1 << 30, 1, 256, pool));
    Picture picture = drawn.picture;
    picture.stride = 127;
    EXPECT_FALSE(toBgra(picture, bgra.data(), 64, 48, 256, pool));
    picture = drawn.picture;
    picture.height = 0;
    EXPECT_FALSE(toBgra(picture, bgra.data(), 64, 48, 256, pool));
}

TEST(NeededBytes, AreThoseOfTheDefinitions) {
    EXPECT_EQ(neededBytes(Layout::Yuyv, 640, 480, 1280), 640u * 480 * 2);
    EXPECT_EQ(neededBytes(Layout::Yuyv, 640, 480, 2048), 2048u * 479 + 1280); // the last row needs no padding
    EXPECT_EQ(neededBytes(Layout::Nv12, 640, 480, 640), 640u * 480 * 3 / 2);
    EXPECT_EQ(neededBytes(Layout::I420, 640, 480, 640), 640u * 480 * 3 / 2);
    EXPECT_EQ(neededBytes(Layout::I422, 640, 480, 640), 640u * 480 * 2);
    EXPECT_EQ(neededBytes(Layout::Grey, 3, 3, 3), 9u);
    EXPECT_EQ(neededBytes(Layout::I420, 3, 3, 4), 4u * 3 + 2 * 2 * 2);
}

} // namespace tests
} // namespace ostrel
