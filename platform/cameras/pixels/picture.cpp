#include "platform/cameras/pixels/picture.h"

#include "base/limits.h"
#include "platform/cameras/pixels/jpeg.h"

#include <algorithm>
#include <limits>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

size_t bytesOfSample(Layout layout) {
    return layout == Layout::P010 ? 2 : 1;
}

// Of layouts whose pixels are whole bytes in one plane; 0 for others.
int bytesOfPixel(Layout layout) {
    switch (layout) {
    case Layout::Rgb:
    case Layout::Bgr:
        return 3;
    case Layout::Bgrx:
    case Layout::Xrgb:
    case Layout::Rgbx:
        return 4;
    case Layout::Rgb565:
    case Layout::Rgb565Be:
    case Layout::Grey10:
    case Layout::Grey12:
    case Layout::Grey16:
    case Layout::Grey16Be:
        return 2;
    case Layout::Grey:
    case Layout::Luma:
        return 1;
    default:
        return 0;
    }
}

// Of a plane of a block.
size_t strideInBlock(Layout layout, int plane, size_t first) {
    if (plane == 0)
        return first;
    const bool halved = chromaOf(layout) != Chroma::Full;
    if (planeCount(layout) == 2)
        return halved ? first : 2 * first;
    return halved ? first / 2 : first;
}

size_t bytesOfRows(const PlaneShape& shape, size_t stride) {
    return stride * static_cast<size_t>(shape.rows - 1) + shape.rowBytes;
}

// Whether the rows can be reached, two fields at a time as well.
bool strideIsSane(const PlaneShape& shape, int stride) {
    return stride <= std::numeric_limits<int>::max() / 2 && stride >= 0 &&
           static_cast<size_t>(stride) >= shape.rowBytes;
}

} // namespace

bool isFullRange(YuvMatrix matrix) {
    return matrix == YuvMatrix::Bt601Full || matrix == YuvMatrix::Bt709Full ||
           matrix == YuvMatrix::Bt2020Full;
}

Chroma chromaOf(Layout layout) {
    switch (layout) {
    case Layout::Nv12:
    case Layout::Nv21:
    case Layout::P010:
    case Layout::I420:
    case Layout::Yv12:
        return Chroma::Halved;
    case Layout::Yuyv:
    case Layout::Uyvy:
    case Layout::Yvyu:
    case Layout::Vyuy:
    case Layout::Nv16:
    case Layout::I422:
        return Chroma::HalvedColumns;
    case Layout::Nv24:
    case Layout::I444:
        return Chroma::Full;
    default:
        return Chroma::None;
    }
}

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

int planeCount(Layout layout) {
    switch (layout) {
    case Layout::Nv12:
    case Layout::Nv21:
    case Layout::Nv16:
    case Layout::Nv24:
    case Layout::P010:
        return 2;
    case Layout::I420:
    case Layout::Yv12:
    case Layout::I422:
    case Layout::I444:
        return 3;
    default:
        return 1;
    }
}

PlaneShape planeShape(Layout layout, int plane, int width, int height) {
    const Chroma chroma = chromaOf(layout);
    const int planes = planeCount(layout);
    const auto columns = static_cast<size_t>(width);
    const auto half = static_cast<size_t>(chromaWidth(chroma, width));
    if (plane > 0)
        return {half * (planes == 2 ? 2 : 1) * bytesOfSample(layout), chromaHeight(chroma, height)};
    if (planes > 1)
        return {columns * bytesOfSample(layout), height};
    if (chroma != Chroma::None)
        return {half * 4, height};
    return {columns * static_cast<size_t>(bytesOfPixel(layout)), height};
}

size_t bytesOfPlane(const Picture& p, int plane) {
    const Plane& at = p.planes[static_cast<size_t>(plane)];
    if (p.layout == Layout::Jpeg || p.layout == Layout::Opaque)
        return at.bytes;
    return bytesOfRows(planeShape(p.layout, plane, p.width, p.height), static_cast<size_t>(at.stride));
}

int minimumStride(Layout layout, int width) {
    const size_t row = planeShape(layout, 0, width, 1).rowBytes;
    const bool halved = planeCount(layout) > 1 && chromaOf(layout) != Chroma::Full;
    const size_t pair = 2 * bytesOfSample(layout);
    return static_cast<int>(halved ? (row + pair - 1) / pair * pair : row);
}

int saneStride(uint32_t told, size_t least) {
    const auto most = static_cast<uint32_t>(LARGEST_SIDE) * 4 * 2;
    return std::max(static_cast<int>(least), static_cast<int>(std::min(told, most)));
}

size_t neededBytes(Layout layout, int width, int height, int stride) {
    if (layout == Layout::Jpeg || layout == Layout::Opaque)
        return 1;
    size_t begin = 0;
    const int last = planeCount(layout) - 1;
    for (int i = 0; i < last; ++i)
        begin += strideInBlock(layout, i, static_cast<size_t>(stride)) *
                 static_cast<size_t>(planeShape(layout, i, width, height).rows);
    return begin + bytesOfRows(planeShape(layout, last, width, height),
                               strideInBlock(layout, last, static_cast<size_t>(stride)));
}

void setBlock(Picture& picture, const uint8_t* data, size_t bytes, int stride) {
    size_t begin = 0;
    const int count = planeCount(picture.layout);
    for (int i = 0; i < count; ++i) {
        Plane& plane = picture.planes[static_cast<size_t>(i)];
        const size_t own = strideInBlock(picture.layout, i, static_cast<size_t>(stride));
        const size_t rows =
            static_cast<size_t>(planeShape(picture.layout, i, picture.width, picture.height).rows);
        const size_t from = std::min(begin, bytes);
        plane.data = data + from;
        plane.bytes = bytes - from;
        plane.stride = static_cast<int>(own);
        begin += own * rows;
    }
}

const char* reason(Fault fault) {
    switch (fault) {
    case Fault::None:
        break;
    case Fault::Empty:
        return "empty";
    case Fault::Truncated:
        return "truncated";
    case Fault::NotJpeg:
        return "not a JPEG picture";
    case Fault::Unsupported:
        return "unsupported JPEG";
    case Fault::Undecodable:
        return "undecodable";
    }
    return "";
}

Fault faultOf(const Picture& p) {
    if (p.layout == Layout::Jpeg)
        return faultOfJpeg(p.planes[0].data, p.planes[0].bytes);
    if (!sizeIsSane(p.width, p.height))
        return Fault::Undecodable;
    if (p.planes[0].bytes == 0)
        return Fault::Empty;
    for (int i = 0; i < planeCount(p.layout); ++i) {
        const Plane& plane = p.planes[static_cast<size_t>(i)];
        const PlaneShape shape = planeShape(p.layout, i, p.width, p.height);
        if (!strideIsSane(shape, plane.stride))
            return Fault::Undecodable;
        if (plane.bytes < bytesOfPlane(p, i))
            return Fault::Truncated;
    }
    return Fault::None;
}

int decodeCost(Layout layout) {
    // Measured at 1280x720 against a copy of the same traffic.
    switch (layout) {
    case Layout::Bgrx:
    case Layout::Bgr:
        return 10;
    case Layout::Rgb:
    case Layout::Xrgb:
    case Layout::Rgbx:
        return 11;
    case Layout::Yuyv:
    case Layout::Uyvy:
        return 22;
    case Layout::Nv12:
    case Layout::Nv21:
        return 25;
    case Layout::I420:
    case Layout::Yv12:
    case Layout::I422:
    case Layout::I444:
        return 29;
    case Layout::Yvyu:
    case Layout::Vyuy:
    case Layout::Nv16:
    case Layout::Nv24:
        return 35;
    case Layout::P010:
        return 38;
    case Layout::Rgb565:
        return 40; // few colours
    case Layout::Rgb565Be:
        return 45;
    case Layout::Jpeg:
    case Layout::Opaque:
        break;
    case Layout::Grey:
    case Layout::Luma:
        return 400; // no colours: only for cameras that have nothing else
    case Layout::Grey10:
    case Layout::Grey12:
    case Layout::Grey16:
    case Layout::Grey16Be:
        return 410;
    }
    return 300;
}

bool sizeIsSane(int width, int height) {
    return width > 0 && height > 0 && width <= LARGEST_SIDE && height <= LARGEST_SIDE;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
