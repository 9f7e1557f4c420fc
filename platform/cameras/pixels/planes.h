// Pictures of luma and chroma, as pixels of any size.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PLANES_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PLANES_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

namespace ostrel {
namespace cameras {
namespace pixels {

// The picture must have chroma and all of its bytes. Re-entrant.
bool yuvTo(const Picture& picture, const Output& to, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
