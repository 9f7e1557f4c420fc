// Pictures of luma and chroma: scaling them as planes, and turning them into B, G, R, A of the same size.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PLANES_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PLANES_H

#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

namespace ostrel {
namespace cameras {
namespace pixels {

bool isYuv(Layout layout);

// The picture must have all of its bytes. Re-entrant.
bool planesToBgra(const Picture& picture, uint8_t* bgra, int stride, PixelPool& pool);

// Writes the picture as I420 of the size and stride that `small` describes.
bool scalePlanes(const Picture& picture, uint8_t* i420, const Picture& small, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
