// What the cameras of the benchmark deliver: one picture in the layouts that webcams have, with a number in
// it.
#ifndef OSTREL_BENCH_CAPTURE_PICTURES_H
#define OSTREL_BENCH_CAPTURE_PICTURES_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

// fourcc: V4L2_PIX_FMT_YUYV, _NV12 or _MJPEG. Both sides are even. Empty for any other layout.
std::vector<uint8_t> makePicture(uint32_t fourcc, int width, int height);

// From the start of a row to the next; 0 for MJPEG.
uint32_t bytesPerLine(uint32_t fourcc, int width);

// Draws the number as black and white fields at the top left. Does nothing to a JPEG.
void stamp(uint8_t* picture, uint32_t fourcc, int width, uint32_t number);
// Reads it back from the converted picture, whose pixels have 4, 3 or 1 bytes.
uint32_t readStamp(const uint8_t* pixels, int bytesPerPixel, int width);

} // namespace bench

#endif
