// Every conversion, over sizes, lengths and strides. Operations on raw pointers get buffers as large as a
// frame of the size is, with a fence behind them; operations on vectors get any width, height and length.
#include "fuzz/support/check.h"
#include "fuzz/support/fenced_buffer.h"
#include "fuzz/support/input.h"

#include <ostrel/processing.h>

#include <limits.h>
#include <stdlib.h>
#include <vector>

using fuzz::FencedBuffer;
using fuzz::Input;
using ostrel::OVideoConverter;

namespace {

typedef std::vector<uint8_t> Bytes;

const int64_t LARGEST = 8 << 20;

struct Size {
    int width;
    int height;

    size_t pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    bool even() const { return width % 2 == 0 && height % 2 == 0; }
    // As far as libyuv reaches: chroma rows are width / 2 apart, but there are half as many as rows, rounded
    // up, and each has half as many samples as there are columns, rounded up.
    size_t i420Bytes() const {
        const size_t rows = static_cast<size_t>((height + 1) / 2);
        const size_t chroma =
            (rows - 1) * static_cast<size_t>(width / 2) + static_cast<size_t>((width + 1) / 2);
        return pixels() + pixels() / 4 + chroma;
    }
    size_t yuy2Row() const { return static_cast<size_t>((width + 1) / 2 * 4); }
    size_t yuy2Bytes() const { return static_cast<size_t>((height - 1) * width * 2) + yuy2Row(); }
};

Size smallSize(Input& input) {
    const int width = input.between(1, 150);
    return {width, input.between(1, 70)};
}

// BT.601 with limited range, in thousandths.
int luma(int r, int g, int b) {
    return (16000 + 257 * r + 504 * g + 98 * b) / 1000;
}

void checkOpaque(const FencedBuffer& argb) {
    for (size_t alpha = 3; alpha < argb.size(); alpha += 4)
        CHECK(argb[alpha] == 255);
}

void checkLumaOfRgb(const FencedBuffer& i420, const FencedBuffer& rgb, Size size, size_t bytesPerPixel,
                    bool flip) {
    const size_t width = static_cast<size_t>(size.width);
    for (size_t pixel = 0; pixel < size.pixels(); ++pixel) {
        const size_t row = pixel / width;
        const size_t from =
            flip ? (static_cast<size_t>(size.height) - 1 - row) * width + pixel % width : pixel;
        const size_t at = from * bytesPerPixel;
        CHECK(abs(i420[pixel] - luma(rgb[at + 2], rgb[at + 1], rgb[at])) <= 2);
    }
}

void rgb24ToI420(Input& input) {
    const Size size = smallSize(input);
    FencedBuffer src(size.pixels() * 3);
    FencedBuffer dst(size.i420Bytes());
    input.fill(src.data(), src.size());
    CHECK(OVideoConverter::RGB24ToI420(src.data(), dst.data(), size.width, size.height) == 0);
    CHECK(dst.startIntact());
    checkLumaOfRgb(dst, src, size, 3, true);
}

void argbToI420(Input& input) {
    const Size size = smallSize(input);
    FencedBuffer src(size.pixels() * 4);
    FencedBuffer dst(size.i420Bytes());
    input.fill(src.data(), src.size());
    CHECK(OVideoConverter::ARGBToI420(src.data(), dst.data(), size.width, size.height) == 0);
    CHECK(dst.startIntact());
    checkLumaOfRgb(dst, src, size, 4, false);
}

void i420ToArgb(Input& input) {
    const Size size = smallSize(input);
    FencedBuffer src(size.i420Bytes());
    FencedBuffer dst(size.pixels() * 4);
    input.fill(src.data(), src.size());
    CHECK(OVideoConverter::I420ToARGB32(src.data(), dst.data(), size.width, size.height) == 0);
    CHECK(dst.startIntact());
    checkOpaque(dst);
}

void yuy2ToArgb(Input& input) {
    const Size size = smallSize(input);
    FencedBuffer src(size.yuy2Bytes());
    FencedBuffer dst(size.pixels() * 4);
    input.fill(src.data(), src.size());
    CHECK(OVideoConverter::YUY2ToARGB(src.data(), dst.data(), size.width, size.height) == 0);
    CHECK(dst.startIntact());
    checkOpaque(dst);
}

// There and back: what I420ToYUY2 packs, YUY2ToI420 unpacks to the same frame.
void i420ToYuy2AndBack(Input& input) {
    const Size size = smallSize(input);
    FencedBuffer src(size.i420Bytes());
    FencedBuffer packed(size.yuy2Bytes());
    FencedBuffer unpacked(size.i420Bytes());
    input.fill(src.data(), src.size());
    CHECK(OVideoConverter::I420ToYUY2(src.data(), packed.data(), size.width, size.height, 0) == 0);
    CHECK(OVideoConverter::YUY2ToI420(size.width, size.height, packed.data(), unpacked.data()) == 0);
    CHECK(packed.startIntact() && unpacked.startIntact());
    for (size_t index = 0; size.even() && index < src.size(); ++index)
        CHECK(src[index] == unpacked[index]);
}

// Any stride, also less than a row and upwards.
void i420ToYuy2WithStride(Input& input) {
    const Size size = smallSize(input);
    const int stride = input.between(-400, 400);
    const bool tight = stride == 0 || stride == size.width;
    const int rowToRow = tight ? size.width * 2 : stride;
    const size_t rows = static_cast<size_t>(abs(rowToRow)) * static_cast<size_t>(size.height - 1);
    FencedBuffer src(size.i420Bytes());
    FencedBuffer dst(rows + size.yuy2Row());
    input.fill(src.data(), src.size());
    uint8_t* const firstRow = rowToRow < 0 ? dst.data() + rows : dst.data();
    CHECK(OVideoConverter::I420ToYUY2(src.data(), firstRow, size.width, size.height, stride) == 0);
    CHECK(dst.startIntact());
    if (static_cast<size_t>(abs(rowToRow)) < size.yuy2Row())
        return; // rows overwrite each other, at odd widths by the second pixel of the last pair
    for (int row = 0; row < size.height; ++row)
        for (int x = 0; x < size.width; ++x)
            CHECK(firstRow[row * rowToRow + x * 2] == src[static_cast<size_t>(row * size.width + x)]);
}

void rgb24ToArgb(Input& input) {
    const Size size = smallSize(input);
    Bytes src(size.pixels() * 3);
    Bytes dst(size.pixels() * 4);
    input.fill(src.data(), src.size());
    CHECK(OVideoConverter::RGB24ToARGB32(src, dst, size.width, size.height) == 0);
    const size_t width = static_cast<size_t>(size.width);
    for (size_t pixel = 0; pixel < size.pixels(); ++pixel) {
        const size_t from = (static_cast<size_t>(size.height) - 1 - pixel / width) * width + pixel % width;
        for (size_t component = 0; component < 3; ++component)
            CHECK(dst[pixel * 4 + component] == src[from * 3 + component]);
        CHECK(dst[pixel * 4 + 3] == 255);
    }
}

// Null pointers are refused whatever the size is; so are sizes without pixels.
void refused(Input& input) {
    const int width = input.number();
    const int height = input.number();
    const int stride = input.number();
    const bool hasPixels = width > 0 && height != 0;
    FencedBuffer room(64);
    uint8_t* const src = hasPixels ? nullptr : room.data();
    uint8_t* const dst = room.data();
    CHECK(OVideoConverter::RGB24ToI420(src, dst, width, height) == -1);
    CHECK(OVideoConverter::ARGBToI420(src, dst, width, height) == -1);
    CHECK(OVideoConverter::I420ToARGB32(src, dst, width, height) == -1);
    CHECK(OVideoConverter::YUY2ToARGB(src, dst, width, height) == -1);
    CHECK(OVideoConverter::I420ToYUY2(src, dst, width, height, stride) == -1);
    CHECK(OVideoConverter::YUY2ToI420(width, height, src, dst) == -1);
    for (size_t index = 0; index < room.size(); ++index)
        CHECK(room[index] == 0);
}

// Sizes as real numbers, to tell which of them wrap at 32 bits.
struct Counts {
    Counts(int width, int height)
        : rgb24(static_cast<int32_t>(static_cast<uint32_t>(width) * 3u * static_cast<uint32_t>(height))),
          yuy2(static_cast<int32_t>(static_cast<uint32_t>(width) * 2u * static_cast<uint32_t>(height))),
          real(static_cast<long double>(width) * 3 * height) {}

    bool wrapped() const { return real < INT_MIN || real > INT_MAX; }

    int32_t rgb24;
    int32_t yuy2;
    long double real;
};

// A length for a source: the one of the frame, half of it, or any.
size_t sourceLength(Input& input, const Counts& counts) {
    const int choice = input.between(0, 3);
    const int64_t length = choice == 0   ? input.between(0, 65535)
                           : choice == 1 ? counts.rgb24 / 2
                                         : counts.rgb24;
    return length < 0 || length > LARGEST ? 0 : static_cast<size_t>(length);
}

void rgb24ToYuy2(Input& input, int width, int height) {
    const Counts counts(width, height);
    if (counts.yuy2 > LARGEST)
        return;
    Bytes src(sourceLength(input, counts));
    input.fill(src.data(), src.size());
    Bytes dst(static_cast<size_t>(input.between(0, 100)), 7);
    const Bytes before = dst;
    const int answer = OVideoConverter::RGB24ToYUY2(src, dst, width, height);
    if (counts.rgb24 < 0 || src.size() != static_cast<size_t>(counts.rgb24) || counts.yuy2 < 0) {
        CHECK(answer == -1);
        CHECK(dst == before);
        return;
    }
    CHECK(dst.size() == static_cast<size_t>(counts.yuy2));
    CHECK(answer == (width > 0 && height > 0 && !counts.wrapped() ? 0 : -1));
    for (size_t pixel = 0; answer == 0 && pixel < src.size() / 3; ++pixel)
        CHECK(abs(dst[pixel * 2] - luma(src[pixel * 3 + 2], src[pixel * 3 + 1], src[pixel * 3])) <= 2);
}

void convertToYuy2(Input& input, int width, int height) {
    const Counts counts(width, height);
    if (counts.yuy2 > LARGEST)
        return;
    Bytes src;
    Bytes dst(static_cast<size_t>(input.between(0, 100)), 7);
    const size_t length = sourceLength(input, counts);
    const bool isI420 = counts.rgb24 / 2 >= 0 && length == static_cast<size_t>(counts.rgb24 / 2);
    const bool isFrame = width > 0 && height > 0 && !counts.wrapped();
    if (isI420 && isFrame) {
        // The caller's part: room for the frame, and sizes that are even or storage as far as libyuv reaches.
        src.reserve(Size{width, height}.i420Bytes());
        dst.resize(Size{width, height}.yuy2Bytes());
    }
    src.resize(length);
    input.fill(src.data(), src.size());
    const Bytes before = dst;
    const int answer = OVideoConverter::convertToYUY2(src, dst, width, height);
    if (isI420) {
        CHECK(answer == (isFrame ? 0 : -1));
        CHECK(dst.size() == before.size());
    } else if (counts.rgb24 < 0 || length != static_cast<size_t>(counts.rgb24) || counts.yuy2 < 0) {
        CHECK(answer == -1);
        CHECK(dst == before);
    } else {
        CHECK(answer == (isFrame ? 0 : -1));
        CHECK(dst.size() == static_cast<size_t>(counts.yuy2));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    void (*const operations[])(Input&) = {rgb24ToI420,       argbToI420,           i420ToArgb,  yuy2ToArgb,
                                          i420ToYuy2AndBack, i420ToYuy2WithStride, rgb24ToArgb, refused};
    const int choice = input.byte() % 12;
    if (choice < 8) {
        operations[choice](input);
        return 0;
    }
    // Small sizes and any ints.
    const bool any = choice % 2 != 0;
    const int width = any ? input.number() : input.between(1, 150);
    const int height = any ? input.number() : input.between(1, 70);
    (choice < 10 ? rgb24ToYuy2 : convertToYuy2)(input, width, height);
    return 0;
}
