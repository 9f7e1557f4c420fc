// Decodes the JPEG pictures of cameras.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_DECODE_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_JPEG_DECODE_H

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pixels {

// Replaces a picture's size by the smallest to which the decoder can reduce it on its way (a half, a quarter,
// an eighth) that still covers the size wanted.
void reduceForJpeg(int& width, int& height, int wantedWidth, int wantedHeight);

// Decodes a picture of width x height, reduced to outWidth x outHeight (a result of reduceForJpeg), into B,
// G, R, A with A = 255. False, with nothing printed, when it has another size, is cut off or does not decode;
// what was written is then undefined. Re-entrant.
bool decodeJpeg(const uint8_t* data, size_t bytes, int width, int height, uint8_t* bgra, int outWidth,
                int outHeight, int stride);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
