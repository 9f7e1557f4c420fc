// Tells broken JPEG pictures from whole ones without decoding them.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_CHECK_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_CHECK_H

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pixels {

// Null for a picture whose frame is whole, else the reason in a few words. Looks at the headers and for the
// end marker; the pixels themselves are not read. Bytes behind the end marker are normal.
const char* faultOfJpeg(const uint8_t* data, size_t bytes, int width, int height);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
