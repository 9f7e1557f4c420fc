// Scaling that leaves flat pictures exactly as they are.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_SCALING_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_SCALING_H

#include "platform/cameras/pixels/pixel_pool.h"

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pixels {

// Rows of pixels, top row first, `stride` bytes apart.
template <typename Byte>
struct Raster {
    Byte* data;
    int width; // pixels
    int height;
    int stride;

    Byte* row(int y) const { return data + static_cast<ptrdiff_t>(y) * stride; }
};
using Source = Raster<const uint8_t>;
using Target = Raster<uint8_t>;

bool sizeIsSane(int width, int height);

// Fills the whole of `to` with the whole of `from`, one byte a pixel. Sizes must be sane. Re-entrant.
void scalePlane(const Source& from, const Target& to, PixelPool& pool);

// The same for B, G, R, A. Neither reads A nor leaves it other than 255.
void scaleBgra(const Source& from, const Target& to, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
