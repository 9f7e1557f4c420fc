// Conversions by way of memory in between: a few rows at a time, so that it stays in the processor's cache.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_BANDS_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_BANDS_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"

#include <algorithm>

namespace ostrel {
namespace cameras {
namespace pixels {

// Even, because two rows may share their chroma; few, so that they fit into the first of the caches.
const int BAND_ROWS = 4;

// Calls convert(band, rows) for each band of a picture that has the output's size, until one is false.
template <typename Convert>
bool inBands(const Picture& picture, const Output& to, Convert convert) {
    for (int y = 0; y < picture.height; y += BAND_ROWS) {
        Picture band = picture;
        band.height = std::min(BAND_ROWS, picture.height - y);
        for (int i = 0; i < planeCount(picture.layout); ++i) {
            Plane& plane = band.planes[static_cast<size_t>(i)];
            const int row = planeShape(picture.layout, i, picture.width, y).rows;
            const ptrdiff_t offset = static_cast<ptrdiff_t>(row) * plane.stride;
            plane.data += offset;
            plane.bytes -= static_cast<size_t>(offset);
        }
        if (!convert(band, to.rows(y, band.height)))
            return false;
    }
    return true;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
