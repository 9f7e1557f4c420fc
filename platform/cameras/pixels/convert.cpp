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

bool convertRows(const Picture& p, const Output& to, PixelPool& pool) {
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
    if (!isSane(to))
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
    for (const Plane& plane : p.planes)
        bytes += plane.bytes;
    PixelPool::Block block = pool.take(bytes);
    uint8_t* to = block.data();
    for (Plane& plane : p.planes) {
        if (plane.bytes == 0)
            continue;
        std::memcpy(to, plane.data, plane.bytes);
        plane.data = to;
        to += plane.bytes;
    }
    return block;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
