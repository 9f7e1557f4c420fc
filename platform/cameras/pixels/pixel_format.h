// Pixel formats by the four characters that the kernel knows them by, in our words.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PIXEL_FORMAT_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PIXEL_FORMAT_H

#include "platform/cameras/pixels/picture.h"

#include <cstdint>
#include <string>

namespace ostrel {
namespace cameras {
namespace pixels {

struct PixelFormat {
    Layout layout = Layout::Bgrx;
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

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
