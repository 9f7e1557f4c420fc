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

// The three separate planes of I420, YV12 and I422.
Planes<const uint8_t> separatePlanes(Layout layout, const uint8_t* data, int width, int height, int stride) {
    Planes<const uint8_t> p;
    p.chroma = layout == Layout::I422 ? Chroma::HalvedColumns : Chroma::Halved;
    p.width = width;
    p.height = height;
    p.y = data;
    p.stride = stride;
    p.chromaStride = stride / 2;
    p.u = data + static_cast<ptrdiff_t>(stride) * height;
    p.v = p.u + static_cast<ptrdiff_t>(p.chromaStride) * chromaHeight(p.chroma, height);
    if (layout == Layout::Yv12)
        std::swap(p.u, p.v);
    return p;
}

Planes<const uint8_t> readable(const Planes<uint8_t>& p) {
    return {p.chroma, p.width, p.height, p.y, p.u, p.v, p.stride, p.chromaStride};
}

// Planes of their own in memory of the pool.
Planes<uint8_t> freshPlanes(Chroma chroma, int width, int height, PixelPool& pool, PixelPool::Block& block) {
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    if (chroma == Chroma::None) {
        block = pool.take(luma);
        return {chroma, width, height, block.data(), nullptr, nullptr, width, 0};
    }
    const int stride = chromaWidth(chroma, width);
    const size_t part = static_cast<size_t>(stride) * static_cast<size_t>(chromaHeight(chroma, height));
    block = pool.take(luma + 2 * part);
    uint8_t* const u = block.data() + luma;
    return {chroma, width, height, block.data(), u, u + part, width, stride};
}

bool isPacked(Layout layout) {
    return layout == Layout::Yuyv || layout == Layout::Uyvy || layout == Layout::Yvyu ||
           layout == Layout::Vyuy;
}

// The planes of a packed 4:2:2 picture, pairs of chroma rows averaged where they are to be halved.
bool splitPacked(const Picture& p, Planes<uint8_t> to) {
    if (p.layout == Layout::Yvyu || p.layout == Layout::Vyuy)
        std::swap(to.u, to.v);
    const bool lumaFirst = p.layout == Layout::Yuyv || p.layout == Layout::Yvyu;
    const bool halved = to.chroma == Chroma::Halved;
    auto* split = lumaFirst ? (halved ? libyuv::YUY2ToI420 : libyuv::YUY2ToI422)
                            : (halved ? libyuv::UYVYToI420 : libyuv::UYVYToI422);
    return split(p.data, p.stride, to.y, to.stride, to.u, to.chromaStride, to.v, to.chromaStride, p.width,
                 p.height) == 0;
}

const uint8_t* interleavedChroma(const Picture& p) {
    return p.data + static_cast<ptrdiff_t>(p.stride) * p.height;
}

bool splitInterleaved(const Picture& p, const Planes<uint8_t>& to) {
    auto* split = p.layout == Layout::Nv12 ? libyuv::NV12ToI420 : libyuv::NV21ToI420;
    return split(p.data, p.stride, interleavedChroma(p), p.stride, to.y, to.stride, to.u, to.chromaStride,
                 to.v, to.chromaStride, p.width, p.height) == 0;
}

bool hasSeparatePlanes(Layout layout) {
    return layout == Layout::I420 || layout == Layout::Yv12 || layout == Layout::I422;
}

// At the picture's own size.
bool convertPlanes(const Planes<const uint8_t>& p, YuvMatrix matrix, const Target& to) {
    if (p.chroma == Chroma::None)
        return libyuv::I400ToARGBMatrix(p.y, p.stride, to.data, to.stride, &constants(matrix), p.width,
                                        p.height) == 0;
    auto* convert = p.chroma == Chroma::Full            ? libyuv::I444ToARGBMatrix
                    : p.chroma == Chroma::HalvedColumns ? libyuv::I422ToARGBMatrix
                                                        : libyuv::I420ToARGBMatrix;
    return convert(p.y, p.stride, p.u, p.chromaStride, p.v, p.chromaStride, to.data, to.stride,
                   &constants(matrix), p.width, p.height) == 0;
}

bool convertPacked(const Picture& p, const Target& to, PixelPool& pool) {
    if (p.matrix == YuvMatrix::Bt601 && p.layout == Layout::Yuyv)
        return libyuv::YUY2ToARGB(p.data, p.stride, to.data, to.stride, p.width, p.height) == 0;
    if (p.matrix == YuvMatrix::Bt601 && p.layout == Layout::Uyvy)
        return libyuv::UYVYToARGB(p.data, p.stride, to.data, to.stride, p.width, p.height) == 0;
    PixelPool::Block block;
    const auto planes = freshPlanes(Chroma::HalvedColumns, p.width, p.height, pool, block);
    return splitPacked(p, planes) && convertPlanes(readable(planes), p.matrix, to);
}

bool convertInterleaved(const Picture& p, const Target& to) {
    auto* convert = p.layout == Layout::Nv12 ? libyuv::NV12ToARGBMatrix : libyuv::NV21ToARGBMatrix;
    return convert(p.data, p.stride, interleavedChroma(p), p.stride, to.data, to.stride, &constants(p.matrix),
                   p.width, p.height) == 0;
}

Planes<uint8_t> scalePlanes(const Planes<const uint8_t>& from, int width, int height, PixelPool& pool,
                            PixelPool::Block& block) {
    const auto to = freshPlanes(from.chroma, width, height, pool, block);
    scalePlane({from.y, from.width, from.height, from.stride}, {to.y, width, height, to.stride}, pool);
    if (from.chroma == Chroma::None)
        return to;
    const int fromWidth = chromaWidth(from.chroma, from.width);
    const int fromHeight = chromaHeight(from.chroma, from.height);
    const int toWidth = chromaWidth(to.chroma, width), toHeight = chromaHeight(to.chroma, height);
    scalePlane({from.u, fromWidth, fromHeight, from.chromaStride}, {to.u, toWidth, toHeight, to.chromaStride},
               pool);
    scalePlane({from.v, fromWidth, fromHeight, from.chromaStride}, {to.v, toWidth, toHeight, to.chromaStride},
               pool);
    return to;
}

} // namespace

int chromaWidth(Chroma chroma, int width) {
    if (chroma == Chroma::None)
        return 0;
    return chroma == Chroma::Full ? width : width / 2 + width % 2;
}

int chromaHeight(Chroma chroma, int height) {
    if (chroma == Chroma::None)
        return 0;
    return chroma == Chroma::Halved ? height / 2 + height % 2 : height;
}

bool isYuv(Layout layout) {
    return isPacked(layout) || layout == Layout::Nv12 || layout == Layout::Nv21 || hasSeparatePlanes(layout);
}

// Scaled as planes, which have less than half the bytes of the result.
bool yuvToBgra(const Planes<const uint8_t>& p, YuvMatrix matrix, const Target& to, PixelPool& pool) {
    if (p.width == to.width && p.height == to.height)
        return convertPlanes(p, matrix, to);
    PixelPool::Block block;
    const auto scaled = scalePlanes(p, to.width, to.height, pool, block);
    return convertPlanes(readable(scaled), matrix, to);
}

bool yuvToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    if (hasSeparatePlanes(p.layout))
        return yuvToBgra(separatePlanes(p.layout, p.data, p.width, p.height, p.stride), p.matrix, to, pool);
    if (p.width == to.width && p.height == to.height)
        return isPacked(p.layout) ? convertPacked(p, to, pool) : convertInterleaved(p, to);
    PixelPool::Block block;
    const auto planes = freshPlanes(Chroma::Halved, p.width, p.height, pool, block);
    const bool split = isPacked(p.layout) ? splitPacked(p, planes) : splitInterleaved(p, planes);
    return split && yuvToBgra(readable(planes), p.matrix, to, pool);
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
