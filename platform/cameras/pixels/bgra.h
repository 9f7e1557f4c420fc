// Any picture that a camera delivers, as B, G, R, A of any size.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_BGRA_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_BGRA_H

#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

namespace ostrel {
namespace cameras {
namespace pixels {

// Writes the whole picture as B, G, R, A with A = 255, scaled to width x height, rows stride bytes apart.
// False for a picture with fewer bytes than it needs, one that does not decode, and sizes that are not
// positive. Re-entrant. Takes pixel memory from the pool only.
bool toBgra(const Picture& picture, uint8_t* bgra, int width, int height, int stride, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
