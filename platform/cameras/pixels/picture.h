// A picture as a camera delivers it, and how many bytes it takes.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PICTURE_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PICTURE_H

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pixels {

// Named by the order of the bytes in memory. Planar layouts lie in one buffer, plane after plane; the rows of
// the colour planes are as long as those of the first plane (interleaved) or half as long (separate).
enum class Layout {
    Yuyv,
    Uyvy,
    Yvyu,
    Vyuy,
    Nv12,   // Y, then U and V interleaved, both axes halved
    Nv21,   // Y, then V and U interleaved
    I420,   // Y, U, V, both axes halved
    Yv12,   // Y, V, U, both axes halved
    I422,   // Y, U, V, columns halved
    Rgb,    // three bytes R, G, B
    Bgr,    // three bytes B, G, R
    Bgrx,   // four bytes, as in the result; the fourth is not trusted
    Xrgb,   // four bytes X, R, G, B
    Rgbx,   // four bytes R, G, B, X
    Rgb565, // 16 bits, little endian, red on top
    Grey,   // one byte, full range
    Jpeg
};

// What the numbers of Y, U and V mean.
enum class YuvMatrix { Bt601, Bt601Full, Bt709, Bt709Full, Bt2020, Bt2020Full };

struct Picture {
    Layout layout = Layout::Bgrx;
    YuvMatrix matrix = YuvMatrix::Bt601;
    int width = 0; // pixels
    int height = 0;
    int stride = 0; // bytes from row to row of the first plane; unused for Jpeg
    const uint8_t* data = nullptr;
    size_t bytes = 0;
};

// The length of a row without padding; 0 for Jpeg.
int minimumStride(Layout layout, int width);

// How many bytes a picture takes from its first to its last; 1 for Jpeg.
size_t neededBytes(Layout layout, int width, int height, int stride);

// What turning one pixel into B, G, R, A costs, in parts of what copying it costs. For ranking only.
int decodeCost(Layout layout);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
