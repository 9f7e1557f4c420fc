#include "platform/cameras/pixels/convert.h"

#include "platform/cameras/pixels/fields.h"
#include "platform/cameras/pixels/grey.h"
#include "platform/cameras/pixels/jpeg.h"
#include "platform/cameras/pixels/planes.h"
#include "platform/cameras/pixels/rgb.h"
#include "platform/cameras/pixels/scaling.h"

#include <cstring>
#include <limits>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

bool isSane(const Output& to) {
    return sizeIsSane(to.width, to.height) && to.stride >= to.width * bytesPerPixel(to.format) &&
           to.stride <= std::numeric_limits<int>::max() / 2;
}

// Whether libyuv scales that plane where it is.
bool isScaledInPlace(Layout layout, int plane) {
    if (layout == Layout::Grey || layout == Layout::Luma || planeCount(layout) == 3)
        return true;
    return planeCount(layout) == 2 && layout != Layout::P010 && plane == 0;
}

// Scaling, libyuv reads one byte behind the last row, of which it makes nothing. The memory of the pool has
// more than that, but of a camera's it may be the end: then the plane is moved.
Picture withRoomBehind(const Picture& p, PixelPool& pool, PixelPool::Block (&blocks)[3]) {
    Picture result = p;
    for (int i = 0; i < planeCount(p.layout); ++i) {
        Plane& plane = result.planes[static_cast<size_t>(i)];
        const size_t bytes = bytesOfPlane(p, i);
        if (plane.bytes > bytes || !isScaledInPlace(p.layout, i))
            continue;
        blocks[i] = pool.take(bytes);
        std::memcpy(blocks[i].data(), plane.data, bytes);
        plane.data = blocks[i].data();
    }
    return result;
}

bool convertRows(const Picture& picture, const Output& to, PixelPool& pool) {
    PixelPool::Block moved[3];
    const bool sameSize = picture.width == to.width && picture.height == to.height;
    const Picture p = sameSize ? picture : withRoomBehind(picture, pool, moved);
    if (isGrey(p.layout))
        return greyTo(p, to, pool);
    if (chromaOf(p.layout) != Chroma::None)
        return yuvTo(p, to, pool);
    return rgbTo(p, to, pool);
}

bool convertFields(const Picture& p, const Output& to, PixelPool& pool) {
    if (p.width == to.width && p.height == to.height && fieldsAreAlike(p))
        return convertRows(fieldOf(p, 0), to.field(0), pool) && convertRows(fieldOf(p, 1), to.field(1), pool);
    PixelPool::Block block;
    return convertRows(weave(p, pool, block), to, pool);
}

// Reduced by the decoder as far as it can, which saves it the work, and scaled by us from there.
Fault convertJpeg(const Plane& bytes, const Output& to, PixelPool& pool) {
    JpegSize size;
    const Fault fault = sizeOfJpeg(bytes.data, bytes.bytes, size);
    if (fault != Fault::None)
        return fault;
    reduceForJpeg(size.width, size.height, to.width, to.height);
    if (size.width == to.width && size.height == to.height)
        return decodeJpeg(bytes.data, bytes.bytes, to);
    const bool grey = to.format == OutputFormat::Grey;
    const int stride = size.width * (grey ? 1 : 4);
    const PixelPool::Block block = pool.take(static_cast<size_t>(stride) * static_cast<size_t>(size.height));
    const Source whole = {block.data(), size.width, size.height, stride};
    const Fault broken = decodeJpeg(
        bytes.data, bytes.bytes,
        {grey ? OutputFormat::Grey : OutputFormat::Bgra, block.data(), size.width, size.height, stride});
    if (broken != Fault::None)
        return broken;
    if (grey)
        scalePlane(whole, {to.data, to.width, to.height, to.stride}, pool);
    else
        scaleBgra(whole, to, pool);
    return Fault::None;
}

} // namespace

Fault convert(const Picture& p, const Output& to, PixelPool& pool) {
    if (!isSane(to) || p.layout == Layout::Opaque)
        return Fault::Undecodable;
    if (p.layout == Layout::Jpeg)
        return convertJpeg(p.planes[0], to, pool);
    const Fault fault = faultOf(p);
    if (fault != Fault::None)
        return fault;
    const bool done = p.fields == Fields::Woven ? convertRows(p, to, pool) : convertFields(p, to, pool);
    return done ? Fault::None : Fault::Undecodable;
}

PixelPool::Block moveToPool(Picture& p, PixelPool& pool) {
    size_t bytes = 0;
    for (int i = 0; i < planeCount(p.layout); ++i)
        bytes += bytesOfPlane(p, i);
    PixelPool::Block block = pool.take(bytes);
    uint8_t* to = block.data();
    for (int i = 0; i < planeCount(p.layout); ++i) {
        Plane& plane = p.planes[static_cast<size_t>(i)];
        plane.bytes = bytesOfPlane(p, i);
        std::memcpy(to, plane.data, plane.bytes);
        plane.data = to;
        to += plane.bytes;
    }
    return block;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
