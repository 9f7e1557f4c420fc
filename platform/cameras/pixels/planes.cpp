#include "platform/cameras/pixels/planes.h"

#include "platform/cameras/pixels/bands.h"
#include "platform/cameras/pixels/grey.h"
#include "platform/cameras/pixels/scaling.h"

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

// Y, U and V on their own.
struct Planes {
    Chroma chroma;
    int width; // pixels
    int height;
    const uint8_t* y;
    int stride; // bytes
    const uint8_t* u;
    int strideU;
    const uint8_t* v;
    int strideV;
};

size_t area(int width, int height) {
    return static_cast<size_t>(width) * static_cast<size_t>(height);
}

bool isPacked(Layout layout) {
    return planeCount(layout) == 1;
}

// Without padding. Those of Chroma::Full are room enough for whatever is made of any picture of that size.
size_t planeBytes(Chroma chroma, int width, int height) {
    return area(width, height) + 2 * area(chromaWidth(chroma, width), chromaHeight(chroma, height));
}

// Pairs of chroma rows are averaged where they are to be halved.
Planes splitPacked(const Picture& p, Chroma chroma, uint8_t* memory) {
    const Plane& from = p.planes[0];
    const int columns = chromaWidth(chroma, p.width);
    uint8_t* const u = memory + area(p.width, p.height);
    uint8_t* const v = u + area(columns, chromaHeight(chroma, p.height));
    const bool lumaFirst = p.layout == Layout::Yuyv || p.layout == Layout::Yvyu;
    const bool halved = chroma == Chroma::Halved;
    auto* split = lumaFirst ? (halved ? libyuv::YUY2ToI420 : libyuv::YUY2ToI422)
                            : (halved ? libyuv::UYVYToI420 : libyuv::UYVYToI422);
    split(from.data, from.stride, memory, p.width, u, columns, v, columns, p.width, p.height);
    Planes planes = {chroma, p.width, p.height, memory, p.width, u, columns, v, columns};
    if (p.layout == Layout::Yvyu || p.layout == Layout::Vyuy)
        std::swap(planes.u, planes.v);
    return planes;
}

// Y stays where it is.
Planes splitInterleaved(const Picture& p, uint8_t* memory) {
    const Chroma chroma = chromaOf(p.layout);
    const int columns = chromaWidth(chroma, p.width), rows = chromaHeight(chroma, p.height);
    const Plane& luma = p.planes[0];
    const Plane& from = p.planes[1];
    uint8_t* const u = memory;
    uint8_t* const v = memory + area(columns, rows);
    libyuv::SplitUVPlane(from.data, from.stride, u, columns, v, columns, columns, rows);
    Planes planes = {chroma, p.width, p.height, luma.data, luma.stride, u, columns, v, columns};
    if (p.layout == Layout::Nv21)
        std::swap(planes.u, planes.v);
    return planes;
}

// `forPacked`: what a packed picture is to become.
Planes planesOf(const Picture& p, Chroma forPacked, uint8_t* memory) {
    if (isPacked(p.layout))
        return splitPacked(p, forPacked, memory);
    if (planeCount(p.layout) == 2)
        return splitInterleaved(p, memory);
    const Plane& luma = p.planes[0];
    const bool vFirst = p.layout == Layout::Yv12;
    const Plane& u = p.planes[vFirst ? 2 : 1];
    const Plane& v = p.planes[vFirst ? 1 : 2];
    return {chromaOf(p.layout), p.width, p.height, luma.data, luma.stride, u.data,
            u.stride,           v.data,  v.stride};
}

// The same picture in eight bits.
Picture narrowed(const Picture& p, uint8_t* memory) {
    Picture result = p;
    result.layout = Layout::Nv12;
    const int stride = minimumStride(Layout::Nv12, p.width);
    setBlock(result, memory, neededBytes(Layout::Nv12, p.width, p.height, stride), stride);
    for (size_t i = 0; i < 2; ++i) {
        const PlaneShape shape = planeShape(Layout::Nv12, static_cast<int>(i), p.width, p.height);
        const int columns = static_cast<int>(shape.rowBytes);
        takeHighBytes({p.planes[i].data, columns, shape.rows, p.planes[i].stride},
                      {memory + (result.planes[i].data - memory), columns, shape.rows, stride});
    }
    return result;
}

bool convertPlanes(const Planes& p, YuvMatrix matrix, const Output& to) {
    const bool bgra = to.format == OutputFormat::Bgra;
    auto* convert = p.chroma == Chroma::Full ? (bgra ? libyuv::I444ToARGBMatrix : libyuv::I444ToRGB24Matrix)
                    : p.chroma == Chroma::HalvedColumns
                        ? (bgra ? libyuv::I422ToARGBMatrix : libyuv::I422ToRGB24Matrix)
                        : (bgra ? libyuv::I420ToARGBMatrix : libyuv::I420ToRGB24Matrix);
    return convert(p.y, p.stride, p.u, p.strideU, p.v, p.strideV, to.data, to.stride, &constants(matrix),
                   p.width, p.height) == 0;
}

// Of the picture's own size, in one go. False where libyuv has none such.
bool convertDirectly(const Picture& p, const Output& to) {
    const bool bgra = to.format == OutputFormat::Bgra;
    const Plane& first = p.planes[0];
    const Plane& chroma = p.planes[1];
    switch (p.layout) {
    case Layout::Yuyv:
        return bgra && p.matrix == YuvMatrix::Bt601 &&
               libyuv::YUY2ToARGB(first.data, first.stride, to.data, to.stride, p.width, p.height) == 0;
    case Layout::Uyvy:
        return bgra && p.matrix == YuvMatrix::Bt601 &&
               libyuv::UYVYToARGB(first.data, first.stride, to.data, to.stride, p.width, p.height) == 0;
    case Layout::Nv12:
    case Layout::Nv21: {
        auto* convert = p.layout == Layout::Nv12
                            ? (bgra ? libyuv::NV12ToARGBMatrix : libyuv::NV12ToRGB24Matrix)
                            : (bgra ? libyuv::NV21ToARGBMatrix : libyuv::NV21ToRGB24Matrix);
        return convert(first.data, first.stride, chroma.data, chroma.stride, to.data, to.stride,
                       &constants(p.matrix), p.width, p.height) == 0;
    }
    default:
        return false;
    }
}

// To three bytes by way of four, where libyuv has only those in one go.
bool convertByWayOfBgra(const Picture& p, const Output& to, PixelPool& pool) {
    const int stride = p.width * 4;
    const PixelPool::Block block = pool.take(area(stride, BAND_ROWS));
    return inBands(p, to, [&](const Picture& band, const Output& rows) {
        return convertDirectly(band, {OutputFormat::Bgra, block.data(), band.width, band.height, stride}) &&
               libyuv::ARGBToRGB24(block.data(), stride, rows.data, rows.stride, rows.width, rows.height) ==
                   0;
    });
}

bool convertAtOwnSize(const Picture& p, const Output& to, PixelPool& pool) {
    if (convertDirectly(p, to))
        return true;
    if (to.format == OutputFormat::Bgr && isPacked(p.layout) && convertByWayOfBgra(p, to, pool))
        return true;
    // A band of packed rows becomes planes without loss, as their chroma rows are not halved.
    const PixelPool::Block block = pool.take(planeBytes(Chroma::Full, p.width, BAND_ROWS));
    return inBands(p, to, [&](const Picture& band, const Output& rows) {
        if (band.layout == Layout::P010)
            return convertDirectly(narrowed(band, block.data()), rows);
        return convertPlanes(planesOf(band, Chroma::HalvedColumns, block.data()), p.matrix, rows);
    });
}

// Scaled as planes, which have less than half the bytes of the result.
bool convertScaled(const Planes& from, YuvMatrix matrix, const Output& to, PixelPool& pool) {
    const int columns = chromaWidth(from.chroma, to.width), rows = chromaHeight(from.chroma, to.height);
    const int fromColumns = chromaWidth(from.chroma, from.width);
    const int fromRows = chromaHeight(from.chroma, from.height);
    const PixelPool::Block block = pool.take(planeBytes(from.chroma, to.width, to.height));
    uint8_t* const y = block.data();
    uint8_t* const u = y + area(to.width, to.height);
    uint8_t* const v = u + area(columns, rows);
    scalePlane({from.y, from.width, from.height, from.stride}, {y, to.width, to.height, to.width}, pool);
    scalePlane({from.u, fromColumns, fromRows, from.strideU}, {u, columns, rows, columns}, pool);
    scalePlane({from.v, fromColumns, fromRows, from.strideV}, {v, columns, rows, columns}, pool);
    return convertPlanes({from.chroma, to.width, to.height, y, to.width, u, columns, v, columns}, matrix, to);
}

// Whether Y lies by itself, a byte for each pixel.
bool hasPlaneOfLuma(Layout layout) {
    return !isPacked(layout) && layout != Layout::P010;
}

void takeLuma(const Picture& p, const Target& to) {
    const Plane& from = p.planes[0];
    if (p.layout == Layout::P010)
        return takeHighBytes({from.data, p.width, p.height, from.stride}, to);
    const bool lumaFirst = p.layout == Layout::Yuyv || p.layout == Layout::Yvyu;
    auto* take = lumaFirst ? libyuv::YUY2ToY : libyuv::UYVYToY;
    take(from.data, from.stride, to.data, to.stride, to.width, to.height);
}

bool lumaAtOwnSize(const Picture& p, const Output& to, PixelPool& pool) {
    if (isFullRange(p.matrix)) {
        takeLuma(p, {to.data, to.width, to.height, to.stride});
        return true;
    }
    const PixelPool::Block block = pool.take(area(p.width, BAND_ROWS));
    return inBands(p, to, [&](const Picture& band, const Output& rows) {
        takeLuma(band, {block.data(), band.width, band.height, band.width});
        expandRange({block.data(), band.width, band.height, band.width},
                    {rows.data, rows.width, rows.height, rows.stride});
        return true;
    });
}

bool lumaTo(const Picture& p, const Output& to, PixelPool& pool) {
    Picture luma = p;
    luma.layout = Layout::Luma;
    if (hasPlaneOfLuma(p.layout))
        return greyTo(luma, to, pool);
    if (p.width == to.width && p.height == to.height)
        return lumaAtOwnSize(p, to, pool);
    const PixelPool::Block block = pool.take(area(p.width, p.height));
    takeLuma(p, {block.data(), p.width, p.height, p.width});
    luma.planes[0].data = block.data();
    luma.planes[0].stride = p.width;
    return greyTo(luma, to, pool);
}

} // namespace

bool yuvTo(const Picture& p, const Output& to, PixelPool& pool) {
    if (to.format == OutputFormat::Grey)
        return lumaTo(p, to, pool);
    if (p.width == to.width && p.height == to.height)
        return convertAtOwnSize(p, to, pool);
    PixelPool::Block block, narrowBlock;
    Picture narrow = p;
    const size_t most = planeBytes(Chroma::Full, p.width, p.height);
    if (p.layout == Layout::P010) {
        narrowBlock = pool.take(most);
        narrow = narrowed(p, narrowBlock.data());
    }
    if (planeCount(p.layout) < 3) // the others lie as they are to be
        block = pool.take(most);
    return convertScaled(planesOf(narrow, Chroma::Halved, block.data()), p.matrix, to, pool);
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
