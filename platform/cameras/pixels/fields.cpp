#include "platform/cameras/pixels/fields.h"

#include <cstring>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// Where in its plane the field is that begins with row 0 or 1: behind all rows of the other one, or first.
int rowsBefore(Fields fields, int firstRow, int rows) {
    const bool isFirst = (fields == Fields::TopFirst) == (firstRow == 0);
    const int ofOther = firstRow == 0 ? rows / 2 : (rows + 1) / 2;
    return isFirst ? 0 : ofOther;
}

const uint8_t* rowOf(const Plane& plane, int row) {
    return plane.data + static_cast<ptrdiff_t>(row) * plane.stride;
}

} // namespace

bool fieldsAreAlike(const Picture& p) {
    for (int i = 0; i < planeCount(p.layout); ++i)
        if (planeShape(p.layout, i, p.width, p.height).rows % 2 != 0)
            return false;
    return true;
}

Picture fieldOf(const Picture& p, int firstRow) {
    Picture field = p;
    field.fields = Fields::Woven;
    field.height = p.height / 2;
    for (int i = 0; i < planeCount(p.layout); ++i) {
        Plane& plane = field.planes[static_cast<size_t>(i)];
        const int before = rowsBefore(p.fields, firstRow, planeShape(p.layout, i, p.width, p.height).rows);
        plane.data = rowOf(plane, before);
        plane.bytes -= static_cast<size_t>(before) * static_cast<size_t>(plane.stride);
    }
    return field;
}

Picture weave(const Picture& p, PixelPool& pool, PixelPool::Block& block) {
    Picture woven = p;
    woven.fields = Fields::Woven;
    const int stride = minimumStride(p.layout, p.width);
    const size_t bytes = neededBytes(p.layout, p.width, p.height, stride);
    block = pool.take(bytes);
    setBlock(woven, block.data(), bytes, stride);
    uint8_t* const start = block.data();
    for (int i = 0; i < planeCount(p.layout); ++i) {
        const Plane& from = p.planes[static_cast<size_t>(i)];
        const Plane& to = woven.planes[static_cast<size_t>(i)];
        const PlaneShape shape = planeShape(p.layout, i, p.width, p.height);
        uint8_t* out = start + (to.data - start);
        for (int y = 0; y < shape.rows; ++y, out += to.stride)
            std::memcpy(out, rowOf(from, rowsBefore(p.fields, y % 2, shape.rows) + y / 2), shape.rowBytes);
    }
    return woven;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
