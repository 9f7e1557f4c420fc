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

// The four characters, bytes that are not printable as '?', without the blanks at the end.
std::string fourccText(uint32_t fourcc);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
