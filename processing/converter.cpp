// Each conversion works out the planes and strides of a frame without padding and leaves the pixels to
// libyuv, whose verdict on the arguments is the answer. Sizes wrap at 32 bits throughout.
#include <ostrel/processing.h>

#include "base/wrapping.h"

#include <libyuv.h>

#include <algorithm>
#include <stddef.h>

namespace ostrel {

using wrapping::at;
using wrapping::mul;
using wrapping::neg;

namespace {

// The planes of an I420 frame in one buffer. The chroma planes take a quarter of the luma plane each and half
// its stride, cut off and not rounded up. Each plane is reached from the one before: the sum of both offsets
// may wrap where neither does.
template <typename Byte>
struct Planes {
    Planes(Byte* base, int width, int height)
        : y(base), u(at(base, mul(width, height))), v(at(u, mul(width, height) / 4)), yStride(width),
          chromaStride(width / 2) {}

    Byte* y;
    Byte* u;
    Byte* v;
    int yStride;
    int chromaStride;
};

// A size as a vector counts it. Negative sizes become larger than any vector is.
size_t bytes(int32_t size) {
    return static_cast<size_t>(size);
}

// Whether the byte count of an RGB24 frame is its real one and did not wrap. Where it wrapped, a vector of
// the matching length is far shorter than the frame that libyuv would walk through.
bool fits32Bits(int width, int height) {
    const int64_t stride = static_cast<int64_t>(width) * 3;
    return stride == mul(width, 3) && stride * height == mul(width, 3, height);
}

// The bytes that libyuv touches in the I420 buffer of a frame, whose size did not wrap. For even sizes that
// is the whole frame; for an odd height the last row of chroma reaches beyond it.
size_t i420Extent(int width, int height) {
    if (width < 1 || height < 1)
        return 0;
    const int64_t luma = static_cast<int64_t>(width) * height;
    const int64_t lastChromaRow = (static_cast<int64_t>(height) + 1) / 2 - 1;
    return static_cast<size_t>(luma + luma / 4 + lastChromaRow * (width / 2) +
                               (static_cast<int64_t>(width) + 1) / 2);
}

// The last row of packToYUY2(), pixel by pixel.
void packLastRow(const Planes<const uint8_t>& from, const uint8_t* end, uint8_t* dst, int width, int height) {
    const uint8_t NO_COLOUR = 128;
    const ptrdiff_t row = height - 1;
    const uint8_t* const y = from.y + row * from.yStride;
    const uint8_t* const u = from.u + row / 2 * from.chromaStride;
    const uint8_t* const v = from.v + row / 2 * from.chromaStride;
    uint8_t* to = dst + row * 2 * width;
    for (int x = 0; x < width; ++x) {
        const uint8_t* const chroma = (x % 2 == 0 ? u : v) + x / 2;
        *to++ = y[x];
        *to++ = chroma < end ? *chroma : NO_COLOUR;
    }
}

// I420 to YUY2 that stays within the frames at any size: src holds srcBytes, dst a frame. libyuv packs pixels
// in pairs and reads chroma rounded up, so that with an odd size its last row ends behind both.
int packToYUY2(const uint8_t* src, size_t srcBytes, uint8_t* dst, int width, int height) {
    if (width < 1 || height < 1 || (width % 2 == 0 && height % 2 == 0))
        return OVideoConverter::I420ToYUY2(src, dst, width, height, 0);
    if (!src || !dst)
        return -1;
    const Planes<const uint8_t> from(src, width, height);
    // What these rows have too much lies in the next one, which is written after them.
    const int answer = height == 1
                           ? 0
                           : libyuv::I420ToYUY2(from.y, from.yStride, from.u, from.chromaStride, from.v,
                                                from.chromaStride, dst, mul(width, 2), width, height - 1);
    if (answer == 0)
        packLastRow(from, src + srcBytes, dst, width, height);
    return answer;
}

int topDownRGB24ToI420(const uint8_t* src, uint8_t* dst, int width, int height) {
    const Planes<uint8_t> to(dst, width, height);
    return libyuv::RGB24ToI420(src, mul(width, 3), to.y, to.yStride, to.u, to.chromaStride, to.v,
                               to.chromaStride, width, height);
}

} // namespace

int OVideoConverter::RGB24ToI420(const uint8_t* src, uint8_t* dst, int width, int height) {
    const Planes<uint8_t> to(dst, width, height);
    return libyuv::RGB24ToI420(src, mul(width, 3), to.y, to.yStride, to.u, to.chromaStride, to.v,
                               to.chromaStride, width, neg(height));
}

int OVideoConverter::ARGBToI420(const uint8_t* src, uint8_t* dst, int width, int height) {
    const Planes<uint8_t> to(dst, width, height);
    return libyuv::ARGBToI420(src, mul(width, 4), to.y, to.yStride, to.u, to.chromaStride, to.v,
                              to.chromaStride, width, height);
}

int OVideoConverter::I420ToARGB32(const uint8_t* src, uint8_t* dst, int width, int height) {
    const Planes<const uint8_t> from(src, width, height);
    return libyuv::I420ToARGB(from.y, from.yStride, from.u, from.chromaStride, from.v, from.chromaStride, dst,
                              mul(width, 4), width, height);
}

int OVideoConverter::YUY2ToARGB(const uint8_t* src, uint8_t* dst, int width, int height) {
    return libyuv::YUY2ToARGB(src, mul(width, 2), dst, mul(width, 4), width, height);
}

int OVideoConverter::I420ToYUY2(const uint8_t* src, uint8_t* dst, int width, int height, int dstStride) {
    const Planes<const uint8_t> from(src, width, height);
    // A stride of width bytes cannot hold a row; callers that count it in pixels mean a row without padding.
    const bool tight = dstStride == 0 || dstStride == width;
    return libyuv::I420ToYUY2(from.y, from.yStride, from.u, from.chromaStride, from.v, from.chromaStride, dst,
                              tight ? mul(width, 2) : dstStride, width, height);
}

int OVideoConverter::YUY2ToI420(int width, int height, const uint8_t* src, uint8_t* dst) {
    // Some releases of libyuv check nothing here, and write some bytes even for a width of 0.
    if (!src || !dst || width < 1 || height == 0)
        return -1;
    const Planes<uint8_t> to(dst, width, height);
    return libyuv::YUY2ToI420(src, mul(width, 2), to.y, to.yStride, to.u, to.chromaStride, to.v,
                              to.chromaStride, width, height);
}

int OVideoConverter::RGB24ToARGB32(const std::vector<uint8_t>& src, std::vector<uint8_t>& dst, int width,
                                   int height) {
    libyuv::RGB24ToARGB(src.data(), mul(width, 3), dst.data(), mul(width, 4), width, neg(height));
    return 0;
}

int OVideoConverter::RGB24ToYUY2(const std::vector<uint8_t>& src, std::vector<uint8_t>& dst, int width,
                                 int height) {
    const int32_t rgb24Size = mul(width, 3, height);
    const int32_t yuy2Size = mul(width, height, 2);
    if (src.size() != bytes(rgb24Size) || yuy2Size < 0)
        return -1;
    dst.resize(bytes(yuy2Size));
    if (!fits32Bits(width, height))
        return -1;

    std::vector<uint8_t> i420(std::max(bytes(rgb24Size / 2), i420Extent(width, height)));
    // Only the second step decides the answer: without the first the frame is all zero bytes.
    topDownRGB24ToI420(src.data(), i420.data(), width, height);
    return packToYUY2(i420.data(), i420.size(), dst.data(), width, height);
}

int OVideoConverter::convertToYUY2(const std::vector<uint8_t>& src, std::vector<uint8_t>& dst, int width,
                                   int height) {
    const int32_t rgb24Size = mul(width, 3, height);
    if (src.size() == bytes(rgb24Size / 2))
        return fits32Bits(width, height) ? packToYUY2(src.data(), src.size(), dst.data(), width, height) : -1;
    if (src.size() == bytes(rgb24Size))
        return RGB24ToYUY2(src, dst, width, height);
    return -1;
}

std::vector<uint8_t> OVideoConverter::ScaleLDToSD(const std::vector<uint8_t>&) {
    return std::vector<uint8_t>();
}

} // namespace ostrel
