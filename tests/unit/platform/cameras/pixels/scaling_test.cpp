// Scaling changes shapes only: flat pictures stay exactly as they are, and of others every pixel counts.
#include "platform/cameras/pixels/scaling.h"

#include "platform/cameras/pixels/convert.h"
#include "unit/platform/cameras/pixels/drawn_picture.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace ostrel::tests {

using namespace cameras::pixels;

namespace {

using Size = std::pair<int, int>;

// Larger and smaller, by all the ways on which libyuv sets out: a half, a quarter, three quarters, three
// eighths, a ninth, a third of one side, odd ones.
const Size FROM(96, 72);
const Size TO[] = {{96, 72}, {48, 36}, {24, 18}, {72, 54}, {36, 27}, {32, 24},   {96, 24}, {32, 72},
                   {11, 7},  {17, 31}, {1, 1},   {1, 72},  {97, 73}, {192, 144}, {500, 9}};

Picture flat(Layout layout, std::vector<uint8_t>& bytes, uint8_t value) {
    Picture picture;
    picture.layout = layout;
    picture.width = FROM.first;
    picture.height = FROM.second;
    const int stride = minimumStride(layout, picture.width);
    bytes.assign(neededBytes(layout, picture.width, picture.height, stride), value);
    setBlock(picture, bytes.data(), bytes.size(), stride);
    return picture;
}

std::vector<uint8_t> drawn(const Picture& picture, const Size& size,
                           OutputFormat format = OutputFormat::Bgra) {
    PixelPool pool;
    const int stride = size.first * bytesPerPixel(format);
    std::vector<uint8_t> pixels(static_cast<size_t>(stride * size.second));
    EXPECT_EQ(convert(picture, {format, pixels.data(), size.first, size.second, stride}, pool), Fault::None);
    return pixels;
}

} // namespace

TEST(Scaling, LeavesFlatPlanesExactlyAsTheyAre) {
    PixelPool pool;
    for (int value = 0; value < 256; ++value) {
        const std::vector<uint8_t> plane(96 * 72, static_cast<uint8_t>(value));
        for (const Size& size : TO) {
            std::vector<uint8_t> to(static_cast<size_t>(size.first * size.second));
            scalePlane({plane.data(), 96, 72, 96}, {to.data(), size.first, size.second, size.first}, pool);
            ASSERT_EQ(to, std::vector<uint8_t>(to.size(), static_cast<uint8_t>(value)))
                << size.first << " x " << size.second;
        }
    }
}

TEST(Scaling, KeepsBlackWhiteAndGreyInEveryLayout) {
    for (const Layout layout : RAW_LAYOUTS)
        for (const int value : {0, 1, 16, 128, 200, 235, 254, 255})
            for (const OutputFormat format : {OutputFormat::Bgra, OutputFormat::Bgr, OutputFormat::Grey}) {
                std::vector<uint8_t> bytes;
                const Picture picture = flat(layout, bytes, static_cast<uint8_t>(value));
                const std::vector<uint8_t> whole = drawn(picture, FROM, format);
                const auto step = static_cast<size_t>(bytesPerPixel(format));
                for (const Size& size : TO) {
                    std::vector<uint8_t> same(static_cast<size_t>(size.first * size.second) * step);
                    for (size_t i = 0; i < same.size(); ++i)
                        same[i] = whole[i % step];
                    ASSERT_EQ(drawn(picture, size, format), same)
                        << static_cast<int>(layout) << " of " << value << " as " << static_cast<int>(format)
                        << ": " << size.first << " x " << size.second;
                }
            }
}

TEST(Scaling, ShrinkingCountsEveryPixel) {
    std::vector<uint8_t> bytes;
    const Picture picture = flat(Layout::Bgrx, bytes, 0);
    for (size_t i = 0; i < bytes.size(); ++i) // single pixels of black and white
        bytes[i] = (i / 4 % 96 + i / 4 / 96) % 2 ? 255 : 0;
    for (const Size& size : {Size(48, 36), Size(32, 24), Size(24, 18), Size(36, 27), Size(8, 6)}) {
        const std::vector<uint8_t> scaled = drawn(picture, size);
        for (size_t i = 0; i < scaled.size(); ++i)
            if (i % 4 != 3) {
                ASSERT_NEAR(scaled[i], 127.5, 1.5) << size.first << " x " << size.second;
            }
    }
}

TEST(Scaling, ReadsNeitherAlphaNorWhatLiesBetweenRows) {
    PixelPool pool;
    const int stride = 40 * 4 + 8;
    std::vector<uint8_t> from(static_cast<size_t>(stride) * 30, 7);
    for (size_t y = 0; y < 30; ++y)
        for (size_t x = 0; x < 40; ++x)
            for (size_t c = 0; c < 3; ++c)
                from[y * static_cast<size_t>(stride) + 4 * x + c] = 255;
    const int toStride = 13 * 4 + 4;
    std::vector<uint8_t> to(static_cast<size_t>(toStride) * 9, 0xCD);
    scaleBgra({from.data(), 40, 30, stride}, {OutputFormat::Bgra, to.data(), 13, 9, toStride}, pool);
    for (size_t i = 0; i < to.size(); ++i)
        ASSERT_EQ(to[i], i % static_cast<size_t>(toStride) < 13 * 4 ? 255 : 0xCD) << i;
}

} // namespace ostrel::tests
