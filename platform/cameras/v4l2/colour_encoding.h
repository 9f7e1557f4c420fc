// The kernel's words for colours in ours.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_COLOUR_ENCODING_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_COLOUR_ENCODING_H

#include "platform/cameras/pixels/picture.h"

#include <cstdint>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// From the colour fields of a v4l2_pix_format: each may be 0, "default".
pixels::YuvMatrix matrixOf(uint32_t colorspace, uint32_t encoding, uint32_t quantization);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
