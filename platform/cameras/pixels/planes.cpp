#include "platform/cameras/pixels/planes.h"

#include <libyuv.h>
#include <utility>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

const libyuv::YuvConstants& constants(YuvMatrix matrix) {
    switch (matrix) {
    case YuvMatrix::Bt601Full:
        return libyuv::kYuvJPEGConstants;
    case YuvMatrix::Bt709:
        return libyuv::kYuvH709Constants;
    case YuvMatrix::Bt709Full:
        return libyuv::kYuvF709Constants;
    case YuvMatrix::Bt2020:
        return libyuv::kYuv2020Constants;
    case YuvMatrix::Bt2020Full:
        return libyuv::kYuvV2020Constants;
    case YuvMatrix::Bt601:
        break;
    }
    return libyuv::kYuvI601Constants;
}

template <typename Byte>
struct Planes {
    Byte* y;
    Byte* u;
    Byte* v;
    int stride;
    int chromaStride;
};

// The three separate planes of I420, YV12 and I422.
template <typename Byte>
Planes<Byte> separatePlanes(Layout layout, Byte* data, int stride, int height) {
    Planes<Byte> p;
    p.y = data;
    p.stride = stride;
    p.chromaStride = stride / 2;
    const ptrdiff_t chromaRows = layout == Layout::I422 ? height : (height + 1) / 2;
    p.u = data + static_cast<ptrdiff_t>(stride) * height;
    p.v = p.u + p.chromaStride * chromaRows;
    if (layout == Layout::Yv12)
        std::swap(p.u, p.v);
    return p;
}

bool isPacked(Layout layout) {
    return layout == Layout::Yuyv || layout == Layout::Uyvy || layout == Layout::Yvyu ||
           layout == Layout::Vyuy;
}

// The planes of a packed 4:2:2 picture, with every second row of chroma left out when it is to be I420.
bool splitPacked(const Picture& p, bool toI420, Planes<uint8_t> to) {
    if (p.layout == Layout::Yvyu || p.layout == Layout::Vyuy)
        std::swap(to.u, to.v);
    const bool lumaFirst = p.layout == Layout::Yuyv || p.layout == Layout::Yvyu;
    auto* split = lumaFirst ? (toI420 ? libyuv::YUY2ToI420 : libyuv::YUY2ToI422)
                            : (toI420 ? libyuv::UYVYToI420 : libyuv::UYVYToI422);
    return split(p.data, p.stride, to.y, to.stride, to.u, to.chromaStride, to.v, to.chromaStride, p.width,
                 p.height) == 0;
}

bool packedToBgra(const Picture& p, uint8_t* bgra, int stride, PixelPool& pool) {
    if (p.matrix == YuvMatrix::Bt601 && p.layout == Layout::Yuyv)
        return libyuv::YUY2ToARGB(p.data, p.stride, bgra, stride, p.width, p.height) == 0;
    if (p.matrix == YuvMatrix::Bt601 && p.layout == Layout::Uyvy)
        return libyuv::UYVYToARGB(p.data, p.stride, bgra, stride, p.width, p.height) == 0;
    const int rowBytes = minimumStride(Layout::I422, p.width);
    PixelPool::Block block = pool.take(neededBytes(Layout::I422, p.width, p.height, rowBytes));
    const auto planes = separatePlanes(Layout::I422, block.data(), rowBytes, p.height);
    return splitPacked(p, false, planes) &&
           libyuv::I422ToARGBMatrix(planes.y, planes.stride, planes.u, planes.chromaStride, planes.v,
                                    planes.chromaStride, bgra, stride, &constants(p.matrix), p.width,
                                    p.height) == 0;
}

const uint8_t* interleavedChroma(const Picture& p) {
    return p.data + static_cast<ptrdiff_t>(p.stride) * p.height;
}

// Any picture of planes as I420 of the same size. What is I420 already is answered as it stands.
bool toI420(const Picture& p, PixelPool& pool, PixelPool::Block& block, Planes<const uint8_t>& result) {
    if (p.layout == Layout::I420 || p.layout == Layout::Yv12) {
        result = separatePlanes(p.layout, p.data, p.stride, p.height);
        return true;
    }
    const int rowBytes = minimumStride(Layout::I420, p.width);
    block = pool.take(neededBytes(Layout::I420, p.width, p.height, rowBytes));
    const auto to = separatePlanes(Layout::I420, block.data(), rowBytes, p.height);
    result = {to.y, to.u, to.v, to.stride, to.chromaStride};
    if (isPacked(p.layout))
        return splitPacked(p, true, to);
    if (p.layout == Layout::I422) {
        const auto from = separatePlanes(Layout::I422, p.data, p.stride, p.height);
        return libyuv::I422ToI420(from.y, from.stride, from.u, from.chromaStride, from.v, from.chromaStride,
                                  to.y, to.stride, to.u, to.chromaStride, to.v, to.chromaStride, p.width,
                                  p.height) == 0;
    }
    auto* split = p.layout == Layout::Nv12 ? libyuv::NV12ToI420 : libyuv::NV21ToI420;
    return split(p.data, p.stride, interleavedChroma(p), p.stride, to.y, to.stride, to.u, to.chromaStride,
                 to.v, to.chromaStride, p.width, p.height) == 0;
}

} // namespace

bool isYuv(Layout layout) {
    return isPacked(layout) || layout == Layout::Nv12 || layout == Layout::Nv21 || layout == Layout::I420 ||
           layout == Layout::Yv12 || layout == Layout::I422;
}

bool planesToBgra(const Picture& p, uint8_t* bgra, int stride, PixelPool& pool) {
    if (isPacked(p.layout))
        return packedToBgra(p, bgra, stride, pool);
    if (p.layout == Layout::Nv12)
        return libyuv::NV12ToARGBMatrix(p.data, p.stride, interleavedChroma(p), p.stride, bgra, stride,
                                        &constants(p.matrix), p.width, p.height) == 0;
    if (p.layout == Layout::Nv21)
        return libyuv::NV21ToARGBMatrix(p.data, p.stride, interleavedChroma(p), p.stride, bgra, stride,
                                        &constants(p.matrix), p.width, p.height) == 0;
    const auto planes = separatePlanes(p.layout, p.data, p.stride, p.height);
    auto* convert = p.layout == Layout::I422 ? libyuv::I422ToARGBMatrix : libyuv::I420ToARGBMatrix;
    return convert(planes.y, planes.stride, planes.u, planes.chromaStride, planes.v, planes.chromaStride,
                   bgra, stride, &constants(p.matrix), p.width, p.height) == 0;
}

bool scalePlanes(const Picture& p, uint8_t* i420, const Picture& small, PixelPool& pool) {
    PixelPool::Block block;
    Planes<const uint8_t> from = {};
    if (!toI420(p, pool, block, from))
        return false;
    const auto to = separatePlanes(Layout::I420, i420, small.stride, small.height);
    return libyuv::I420Scale(from.y, from.stride, from.u, from.chromaStride, from.v, from.chromaStride,
                             p.width, p.height, to.y, to.stride, to.u, to.chromaStride, to.v, to.chromaStride,
                             small.width, small.height, libyuv::kFilterBox) == 0;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
