#include <ostrel/processing.h>

#include "base/wrapping.h"

#include <libyuv.h>

#include <stddef.h>

namespace ostrel {

using wrapping::add;
using wrapping::at;
using wrapping::mul;

namespace {

// The size of a level; 0 x 0 for a number that is none.
struct Size {
    explicit Size(int quality) { OVideoCommon::qualityToResolution(quality, width, height); }

    size_t i420Bytes() const { return static_cast<size_t>(mul(width, height, 3) / 2); }
    size_t yuy2Bytes() const { return static_cast<size_t>(mul(width, height, 2)); }

    int width;
    int height;
};

int half(int n) {
    return add(n, 1) >> 1;
}

// The planes of an I420 frame in one buffer, halves rounded up.
template <typename Byte>
struct Planes {
    Planes(Byte* base, const Size& size)
        : y(base), u(at(base, mul(size.width, size.height))),
          v(at(u, mul(half(size.height), half(size.width)))), yStride(size.width),
          chromaStride(half(size.width)) {}

    Byte* y;
    Byte* u;
    Byte* v;
    int yStride;
    int chromaStride;
};

// libyuv's filter of the same meaning: its releases number the filters differently. Numbers that are no
// ScaleMethod stay what they are; the conversion keeps them, though FilterMode names only a few.
libyuv::FilterMode filterOf(ScaleMethod method) {
    switch (method) {
    case SCALE_METHOD_NONE:
        return libyuv::kFilterNone;
    case SCALE_METHOD_BILINEAR:
        return libyuv::kFilterBilinear;
    case SCALE_METHOD_BOX:
        return libyuv::kFilterBox;
    }
    return static_cast<libyuv::FilterMode>(method);
}

} // namespace

int OVideoScaler::scaleI420Frame(VIDEO_QUALITY srcQuality, std::vector<uint8_t>& src,
                                 VIDEO_QUALITY dstQuality, std::vector<uint8_t>& dst, ScaleMethod method) {
    const Size srcSize(srcQuality);
    const Size dstSize(dstQuality);
    if (src.size() != srcSize.i420Bytes())
        return -1;
    dst.resize(dstSize.i420Bytes());
    const Planes<const uint8_t> from(src.data(), srcSize);
    const Planes<uint8_t> to(dst.data(), dstSize);
    return libyuv::I420Scale(from.y, from.yStride, from.u, from.chromaStride, from.v, from.chromaStride,
                             srcSize.width, srcSize.height, to.y, to.yStride, to.u, to.chromaStride, to.v,
                             to.chromaStride, dstSize.width, dstSize.height, filterOf(method));
}

int OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY srcQuality, std::vector<uint8_t>& src,
                                 VIDEO_QUALITY dstQuality, std::vector<uint8_t>& dst, ScaleMethod method) {
    const Size srcSize(srcQuality);
    const Size dstSize(dstQuality);
    if (src.size() != srcSize.yuy2Bytes())
        return -1;
    // No step's answer counts from here on. A level that is none makes them do nothing, and what is packed
    // into dst are the zero bytes of the scaled frame.
    std::vector<uint8_t> unpacked(srcSize.i420Bytes());
    OVideoConverter::YUY2ToI420(srcSize.width, srcSize.height, src.data(), unpacked.data());
    std::vector<uint8_t> scaled(dstSize.i420Bytes());
    scaleI420Frame(srcQuality, unpacked, dstQuality, scaled, method);
    dst.resize(dstSize.yuy2Bytes());
    OVideoConverter::I420ToYUY2(scaled.data(), dst.data(), dstSize.width, dstSize.height, 0);
    return 0;
}

} // namespace ostrel
