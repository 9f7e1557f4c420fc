// The JPEG pictures of cameras: their size, whether they are whole, their pixels.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"

namespace ostrel {
namespace cameras {
namespace pixels {

struct JpegSize {
    int width = 0; // pixels
    int height = 0;
};

// What the header says; the size is sane then. Re-entrant.
Fault sizeOfJpeg(const uint8_t* data, size_t bytes, JpegSize& size);

// Whether a picture may be shown, as far as that is certain at a glance: the headers are read, and the end
// marker is looked for. Where it is missing, the compressed data is read to tell a picture that lacks nothing
// but the marker from one that was cut. Bytes in front of the picture (zeros, fill bytes), between its
// segments and behind it are normal. Re-entrant.
Fault faultOfJpeg(const uint8_t* data, size_t bytes);

// Replaces a picture's size by the smallest to which the decoder can reduce it on its way (a half, a quarter,
// an eighth) that still covers the size wanted.
void reduceForJpeg(int& width, int& height, int wantedWidth, int wantedHeight);

// Decodes a picture into an output of its own size or of one that reduceForJpeg() gives. After a fault what
// was written is undefined. Prints nothing. Re-entrant.
Fault decodeJpeg(const uint8_t* data, size_t bytes, const Output& to);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
