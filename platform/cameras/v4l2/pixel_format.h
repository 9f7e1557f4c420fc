// The kernel's pixel formats in our words.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_PIXEL_FORMAT_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_PIXEL_FORMAT_H

#include "platform/cameras/pixels/picture.h"

#include <cstdint>
#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

struct PixelFormat {
    pixels::Layout layout = pixels::Layout::Bgrx;
    int memoryPlanes = 1; // blocks of memory for each picture: one, or one for each plane of the layout
};

// False for a format that cannot be converted; `format` is then untouched.
bool formatOf(uint32_t fourcc, PixelFormat& format);

// Whether it can be converted, and be had by this interface: the one for single planes has no words for
// several.
bool isConvertible(uint32_t fourcc, bool multiplanar);

// The four characters, bytes that are not printable as '?', without the blanks at the end. "-BE" follows
// where the format is marked as big-endian.
std::string fourccText(uint32_t fourcc);

// From the colour fields of a v4l2_pix_format: each may be 0, "default".
pixels::YuvMatrix matrixOf(uint32_t colorspace, uint32_t encoding, uint32_t quantization);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
