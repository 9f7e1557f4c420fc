// Every layout against arithmetic of the tests' own, from the definitions of the colour standards.
#include "platform/cameras/pixels/convert.h"

#include "unit/platform/cameras/pixels/drawn_picture.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <new>
#include <random>
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

namespace ostrel::tests {

using namespace cameras::pixels;

namespace {

const OutputFormat FORMATS[] = {OutputFormat::Bgra, OutputFormat::Bgr, OutputFormat::Grey};

// Grey has no colours to be told apart by: it is what the green was.
bool isGreyLayout(Layout layout) {
    return layout >= Layout::Grey && layout <= Layout::Grey16Be;
}

int tolerance(const Picture& picture, OutputFormat format) {
    if (picture.layout == Layout::Rgb565 || picture.layout == Layout::Rgb565Be)
        return format == OutputFormat::Grey ? 6 : 8; // five bits
    if (format == OutputFormat::Grey)
        return isGreyLayout(picture.layout) ? 0 : 2;
    if (picture.layout == Layout::Luma)
        return 1;
    // libyuv's factor for U in blue ends at 2.0, where these matrices want 2.11 and 2.14.
    if (picture.matrix == YuvMatrix::Bt709 || picture.matrix == YuvMatrix::Bt2020)
        return 10;
    return isYuv(picture.layout) ? 4 : 0;
}

// What a pixel of that colour is to become, byte by byte.
std::vector<double> expected(const Colour& c, const Picture& picture, OutputFormat format) {
    double grey = c.g;
    if (isYuv(picture.layout) || picture.layout == Layout::Luma)
        grey = lumaOf(c, picture.matrix);
    else if (!isGreyLayout(picture.layout))
        grey = lumaOf(c, YuvMatrix::Bt601);
    if (format == OutputFormat::Grey)
        return {grey};
    std::vector<double> pixel = {double(c.b), double(c.g), double(c.r)};
    if (isGreyLayout(picture.layout) || picture.layout == Layout::Luma)
        pixel.assign(3, grey);
    if (format == OutputFormat::Bgra)
        pixel.push_back(255);
    return pixel;
}

struct Drawing {
    std::vector<uint8_t> bytes;
    Output output;

    Drawing(OutputFormat format, int width, int height, int padding)
        : output({format, nullptr, width, height, width * bytesPerPixel(format) + padding}) {
        bytes.assign(static_cast<size_t>(output.stride * height), 0xAB);
        output.data = bytes.data();
    }
};

// Compares the middle of each quadrant, an eighth of the picture away from every edge, and that A is 255
// everywhere and nothing outside of the rows was written.
void expectQuadrants(const DrawnPicture& drawn, OutputFormat format, int width, int height, PixelPool& pool) {
    const Drawing to(format, width, height, 13);
    ASSERT_EQ(convert(drawn.picture, to.output, pool), Fault::None);
    const int size = bytesPerPixel(format), allowed = tolerance(drawn.picture, format);
    for (int y = 0; y < height; ++y) {
        const uint8_t* row = to.output.row(y);
        for (int i = width * size; i < to.output.stride; ++i)
            ASSERT_EQ(row[i], 0xAB) << "written behind row " << y;
        const int inY = y % ((height + 1) / 2);
        for (int x = 0; x < width; ++x) {
            if (format == OutputFormat::Bgra) {
                ASSERT_EQ(row[4 * x + 3], 255) << x << ',' << y;
            }
            const int inX = x % ((width + 1) / 2);
            if (inX < width / 8 || inX >= width / 2 - width / 8 || inY < height / 8 ||
                inY >= height / 2 - height / 8)
                continue;
            const auto pixel = expected(quadrantAt(x, y, width, height), drawn.picture, format);
            for (int c = 0; c < size; ++c)
                ASSERT_NEAR(row[size * x + c], pixel[static_cast<size_t>(c)], allowed)
                    << x << ',' << y << " byte " << c;
        }
    }
}

Storage padded(int padding) {
    Storage storage;
    storage.padding = padding;
    return storage;
}

} // namespace

class EveryLayout : public testing::TestWithParam<Layout> {
protected:
    void expectInEveryFormat(const DrawnPicture& drawn, int width, int height) {
        for (const OutputFormat format : FORMATS) {
            SCOPED_TRACE(testing::Message()
                         << "format " << static_cast<int>(format) << ", " << width << " x " << height);
            expectQuadrants(drawn, format, width, height, pool);
        }
    }
    PixelPool pool;
};

TEST_P(EveryLayout, ConvertsAtItsOwnSize) {
    expectInEveryFormat(DrawnPicture(GetParam(), 64, 48), 64, 48);
}

TEST_P(EveryLayout, LeavesOutThePaddingOfItsRows) {
    expectInEveryFormat(DrawnPicture(GetParam(), 64, 48, padded(16)), 64, 48);
    expectInEveryFormat(DrawnPicture(GetParam(), 64, 48, padded(7)), 64, 48);
    expectInEveryFormat(DrawnPicture(GetParam(), 64, 48, padded(16)), 32, 24);
}

TEST_P(EveryLayout, TakesPlanesFromMemoryOfTheirOwn) {
    Storage storage;
    storage.blocks = true;
    expectInEveryFormat(DrawnPicture(GetParam(), 64, 48, storage), 64, 48);
    storage.padding = 6;
    expectInEveryFormat(DrawnPicture(GetParam(), 63, 47, storage), 40, 30);
}

TEST_P(EveryLayout, ScalesUpAndDownAndOutOfShape) {
    const DrawnPicture drawn(GetParam(), 64, 48);
    expectInEveryFormat(drawn, 128, 96);
    expectInEveryFormat(drawn, 32, 24);
    expectInEveryFormat(drawn, 16, 12);
    expectInEveryFormat(drawn, 90, 30);
    expectInEveryFormat(drawn, 40, 100);
}

TEST_P(EveryLayout, TakesOddSizes) {
    expectInEveryFormat(DrawnPicture(GetParam(), 63, 47), 63, 47);
    expectInEveryFormat(DrawnPicture(GetParam(), 63, 47, padded(3)), 31, 95);
    expectInEveryFormat(DrawnPicture(GetParam(), 1, 1), 1, 1);
    expectInEveryFormat(DrawnPicture(GetParam(), 5, 37), 5, 37);
    expectInEveryFormat(DrawnPicture(GetParam(), 1283, 35), 1283, 35);
}

TEST_P(EveryLayout, RefusesAPlaneThatIsOneByteShort) {
    for (int plane = 0; plane < planeCount(GetParam()); ++plane) {
        Storage storage;
        storage.blocks = true;
        DrawnPicture drawn(GetParam(), 64, 48, storage);
        const Drawing to(OutputFormat::Bgra, 64, 48, 0);
        EXPECT_EQ(convert(drawn.picture, to.output, pool), Fault::None);
        drawn.picture.planes[static_cast<size_t>(plane)].bytes = bytesOfPlane(drawn.picture, plane) - 1;
        EXPECT_EQ(convert(drawn.picture, to.output, pool), Fault::Truncated);
    }
}

TEST_P(EveryLayout, RefusesABlockThatIsOneByteShort) {
    const int stride = minimumStride(GetParam(), 64);
    const size_t bytes = neededBytes(GetParam(), 64, 48, stride);
    const std::vector<uint8_t> block(bytes);
    Picture picture;
    picture.layout = GetParam();
    picture.width = 64;
    picture.height = 48;
    setBlock(picture, block.data(), bytes, stride);
    EXPECT_EQ(faultOf(picture), Fault::None);
    setBlock(picture, block.data(), bytes - 1, stride);
    EXPECT_EQ(faultOf(picture), Fault::Truncated);
    setBlock(picture, block.data(), 1, stride);
    EXPECT_EQ(faultOf(picture), Fault::Truncated);
    setBlock(picture, block.data(), 0, stride);
    EXPECT_EQ(faultOf(picture), Fault::Empty);
}

TEST_P(EveryLayout, StaysReadableInMemoryOfItsOwn) {
    Storage storage;
    storage.blocks = true;
    DrawnPicture drawn(GetParam(), 64, 48, storage);
    Picture kept = drawn.picture;
    const PixelPool::Block block = moveToPool(kept, pool);
    for (int i = 0; i < planeCount(GetParam()); ++i) {
        const Plane& plane = drawn.picture.planes[static_cast<size_t>(i)];
        std::fill_n(const_cast<uint8_t*>(plane.data), plane.bytes, uint8_t(0));
    }
    std::swap(drawn.picture, kept);
    expectInEveryFormat(drawn, 64, 48);
}

TEST_P(EveryLayout, AllocatesNoPixelMemoryFrameByFrame) {
    Storage storage;
    storage.matrix = YuvMatrix::Bt709;
    const DrawnPicture drawn(GetParam(), 320, 240, storage);
    std::vector<uint8_t> pixels(640 * 480 * 4);
    const auto convertAll = [&] {
        for (const OutputFormat format : FORMATS) {
            ASSERT_EQ(convert(drawn.picture, {format, pixels.data(), 640, 480, 2560}, pool), Fault::None);
            ASSERT_EQ(convert(drawn.picture, {format, pixels.data(), 320, 240, 2560}, pool), Fault::None);
            ASSERT_EQ(convert(drawn.picture, {format, pixels.data(), 90, 70, 2560}, pool), Fault::None);
        }
    };
    convertAll();
    const size_t before = largeAllocations;
    EXPECT_GT(before, 0u); // the counting works
    for (int i = 0; i < 10; ++i)
        convertAll();
    EXPECT_EQ(largeAllocations, before);
}

// Noise, in which nothing hides.
TEST_P(EveryLayout, HasTheSameColoursWithAndWithoutAFourthByte) {
    std::mt19937 random(7);
    const DrawnPicture drawn(GetParam(), 75, 35, [&](int, int) {
        return Colour{int(random() % 256), int(random() % 256), int(random() % 256)};
    });
    for (const auto& size : {std::make_pair(75, 35), std::make_pair(40, 50), std::make_pair(150, 70)}) {
        const Drawing bgra(OutputFormat::Bgra, size.first, size.second, 0);
        const Drawing bgr(OutputFormat::Bgr, size.first, size.second, 1);
        ASSERT_EQ(convert(drawn.picture, bgra.output, pool), Fault::None);
        ASSERT_EQ(convert(drawn.picture, bgr.output, pool), Fault::None);
        for (int y = 0; y < size.second; ++y)
            for (int x = 0; x < size.first; ++x)
                for (int c = 0; c < 3; ++c)
                    ASSERT_NEAR(bgr.output.row(y)[3 * x + c], bgra.output.row(y)[4 * x + c], 2);
    }
}

INSTANTIATE_TEST_SUITE_P(Raw, EveryLayout, testing::ValuesIn(RAW_LAYOUTS));

TEST(Convert, KnowsEveryMatrixAndRange) {
    PixelPool pool;
    for (const YuvMatrix matrix : {YuvMatrix::Bt601, YuvMatrix::Bt601Full, YuvMatrix::Bt709,
                                   YuvMatrix::Bt709Full, YuvMatrix::Bt2020, YuvMatrix::Bt2020Full})
        for (const Layout layout : RAW_LAYOUTS)
            for (const OutputFormat format : FORMATS) {
                if (!isYuv(layout) && layout != Layout::Luma)
                    continue;
                SCOPED_TRACE(testing::Message()
                             << "matrix " << static_cast<int>(matrix) << " layout "
                             << static_cast<int>(layout) << " format " << static_cast<int>(format));
                Storage storage = padded(4);
                storage.matrix = matrix;
                const DrawnPicture drawn(layout, 64, 48, storage);
                expectQuadrants(drawn, format, 64, 48, pool);
                expectQuadrants(drawn, format, 48, 32, pool);
            }
}

TEST(Convert, GreyOfEveryLimitedLumaIsTheNearestInFullRange) {
    PixelPool pool;
    std::vector<uint8_t> ramp(256), grey(256);
    for (size_t i = 0; i < 256; ++i)
        ramp[i] = static_cast<uint8_t>(i);
    Picture picture;
    picture.layout = Layout::Luma;
    picture.width = 256;
    picture.height = 1;
    setBlock(picture, ramp.data(), 256, 256);
    ASSERT_EQ(convert(picture, {OutputFormat::Grey, grey.data(), 256, 1, 256}, pool), Fault::None);
    for (int y = 0; y < 256; ++y)
        EXPECT_EQ(grey[static_cast<size_t>(y)],
                  std::lround(std::min(255.0, std::max(0.0, (y - 16) * 255.0 / 219))))
            << y;
    picture.matrix = YuvMatrix::Bt601Full;
    ASSERT_EQ(convert(picture, {OutputFormat::Grey, grey.data(), 256, 1, 256}, pool), Fault::None);
    EXPECT_EQ(grey, ramp);
}

TEST(Convert, GreyIsTheLumaOfTheColoursAndPureColoursStayApart) {
    PixelPool pool;
    for (const Colour& c : {Colour{255, 255, 255}, Colour{0, 0, 0}, Colour{255, 0, 0}, Colour{0, 255, 0},
                            Colour{0, 0, 255}, Colour{128, 128, 128}})
        for (const Layout layout : RAW_LAYOUTS) {
            const DrawnPicture drawn(layout, 32, 4, [&](int, int) { return c; });
            const Drawing to(OutputFormat::Grey, 32, 4, 0);
            ASSERT_EQ(convert(drawn.picture, to.output, pool), Fault::None);
            const double wanted = isGreyLayout(layout) ? c.g : lumaOf(c, YuvMatrix::Bt601);
            const int allowed = layout == Layout::Rgb565 || layout == Layout::Rgb565Be ? 5 : 2;
            for (const uint8_t grey : to.bytes) {
                ASSERT_NEAR(grey, wanted, allowed) << static_cast<int>(layout);
                ASSERT_EQ(grey, to.bytes[0]);
            }
        }
}

TEST(Convert, BitsAboveADriversDeepGreyAreWhite) {
    PixelPool pool;
    const uint8_t samples[] = {0x00, 0x04, 0xFF, 0xFF, 0xFF, 0x03, 0xFC, 0x03, 0xFB, 0x03};
    uint8_t grey[5];
    Picture picture;
    picture.layout = Layout::Grey10;
    picture.width = 5;
    picture.height = 1;
    setBlock(picture, samples, sizeof samples, sizeof samples);
    ASSERT_EQ(convert(picture, {OutputFormat::Grey, grey, 5, 1, 5}, pool), Fault::None);
    EXPECT_EQ(std::vector<int>(grey, grey + 5), std::vector<int>({255, 255, 255, 255, 254}));
}

TEST(Convert, RefusesSizesThatMakeNoSense) {
    PixelPool pool;
    const DrawnPicture drawn(Layout::Yuyv, 64, 48);
    std::vector<uint8_t> bgra(64 * 48 * 4);
    const auto refused = [&](const Picture& picture, int width, int height, int stride, OutputFormat format) {
        return convert(picture, {format, bgra.data(), width, height, stride}, pool) == Fault::Undecodable;
    };
    const OutputFormat most = OutputFormat::Bgra;
    EXPECT_TRUE(refused(drawn.picture, 0, 48, 256, most));
    EXPECT_TRUE(refused(drawn.picture, 64, -1, 256, most));
    EXPECT_TRUE(refused(drawn.picture, 64, 48, 255, most));
    EXPECT_TRUE(refused(drawn.picture, 64, 48, 191, OutputFormat::Bgr));
    EXPECT_TRUE(refused(drawn.picture, 64, 48, 63, OutputFormat::Grey));
    EXPECT_TRUE(refused(drawn.picture, 1 << 30, 1, 256, most));
    Picture picture = drawn.picture;
    picture.planes[0].stride = 127;
    EXPECT_TRUE(refused(picture, 64, 48, 256, most));
    picture.planes[0].stride = -128;
    EXPECT_TRUE(refused(picture, 64, 48, 256, most));
    picture.planes[0].stride = std::numeric_limits<int>::max();
    EXPECT_TRUE(refused(picture, 64, 48, 256, most));
    picture = drawn.picture;
    picture.height = 0;
    EXPECT_TRUE(refused(picture, 64, 48, 256, most));
}

TEST(NeededBytes, AreThoseOfTheDefinitions) {
    EXPECT_EQ(neededBytes(Layout::Yuyv, 640, 480, 1280), 640u * 480 * 2);
    EXPECT_EQ(neededBytes(Layout::Yuyv, 640, 480, 2048), 2048u * 479 + 1280); // the last row needs no padding
    EXPECT_EQ(neededBytes(Layout::Nv12, 640, 480, 640), 640u * 480 * 3 / 2);
    EXPECT_EQ(neededBytes(Layout::Nv16, 640, 480, 640), 640u * 480 * 2);
    EXPECT_EQ(neededBytes(Layout::Nv24, 640, 480, 640), 640u * 480 * 3);
    EXPECT_EQ(neededBytes(Layout::P010, 640, 480, 1280), 640u * 480 * 3);
    EXPECT_EQ(neededBytes(Layout::I420, 640, 480, 640), 640u * 480 * 3 / 2);
    EXPECT_EQ(neededBytes(Layout::I422, 640, 480, 640), 640u * 480 * 2);
    EXPECT_EQ(neededBytes(Layout::I444, 640, 480, 640), 640u * 480 * 3);
    EXPECT_EQ(neededBytes(Layout::Grey16, 640, 480, 1280), 640u * 480 * 2);
    EXPECT_EQ(neededBytes(Layout::Grey, 3, 3, 3), 9u);
    EXPECT_EQ(neededBytes(Layout::I420, 3, 3, 4), 4u * 3 + 2 * 2 * 2);
}

} // namespace ostrel::tests
