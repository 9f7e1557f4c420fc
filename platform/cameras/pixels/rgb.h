// Pictures of red, green and blue, as pixels of any size.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_RGB_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_RGB_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

namespace ostrel {
namespace cameras {
namespace pixels {

// False for a picture of another kind. It must have all of its bytes. Re-entrant.
bool rgbTo(const Picture& picture, const Output& to, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
