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

int scaleI420(const uint8_t* src, const Size& srcSize, uint8_t* dst, const Size& dstSize,
              ScaleMethod method) {
    const Planes<const uint8_t> from(src, srcSize);
    const Planes<uint8_t> to(dst, dstSize);
    return libyuv::I420Scale(from.y, from.yStride, from.u, from.chromaStride, from.v, from.chromaStride,
                             srcSize.width, srcSize.height, to.y, to.yStride, to.u, to.chromaStride, to.v,
                             to.chromaStride, dstSize.width, dstSize.height, filterOf(method));
}

} // namespace

int OVideoScaler::scaleI420Frame(VIDEO_QUALITY srcQuality, std::vector<uint8_t>& src,
                                 VIDEO_QUALITY dstQuality, std::vector<uint8_t>& dst, ScaleMethod method) {
    const Size srcSize(srcQuality);
    const Size dstSize(dstQuality);
    if (src.size() != srcSize.i420Bytes())
        return -1;
    dst.resize(dstSize.i420Bytes());
    return scaleI420(src.data(), srcSize, dst.data(), dstSize, method);
}

int OVideoScaler::scaleYUY2Frame(VIDEO_QUALITY srcQuality, std::vector<uint8_t>& src,
                                 VIDEO_QUALITY dstQuality, std::vector<uint8_t>& dst, ScaleMethod method) {
    const Size srcSize(srcQuality);
    const Size dstSize(dstQuality);
    if (src.size() != srcSize.yuy2Bytes())
        return -1;
    // No step's answer counts from here on. A level that is none makes them do nothing, and what is packed
    // into dst are the zero bytes of the scaled frame.
    // Both temporary frames are one block: when two of the same size are freed one after the other, glibc's
    // malloc returns them to the kernel, and the page faults of the next call cost ten times its work.
    std::vector<uint8_t> frames(srcSize.i420Bytes() + dstSize.i420Bytes());
    uint8_t* const unpacked = frames.data();
    uint8_t* const scaled = unpacked + srcSize.i420Bytes();
    OVideoConverter::YUY2ToI420(srcSize.width, srcSize.height, src.data(), unpacked);
    scaleI420(unpacked, srcSize, scaled, dstSize, method);
    dst.resize(dstSize.yuy2Bytes());
    OVideoConverter::I420ToYUY2(scaled, dst.data(), dstSize.width, dstSize.height, 0);
    return 0;
}

} // namespace ostrel
