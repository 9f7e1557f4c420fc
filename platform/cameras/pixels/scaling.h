// Scaling that leaves flat pictures exactly as they are.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_SCALING_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_SCALING_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"
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
};
using Source = Raster<const uint8_t>;
using Target = Raster<uint8_t>;

// Fills the whole of `to` with the whole of `from`, one byte a pixel. Sizes must be sane. Re-entrant.
void scalePlane(const Source& from, const Target& to, PixelPool& pool);

// The same from B, G, R, A, whose A is not read, to colours: the output's format is not Grey.
void scaleBgra(const Source& from, const Output& to, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
