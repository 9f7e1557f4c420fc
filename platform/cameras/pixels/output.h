// Pixels as they are handed out.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_OUTPUT_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_OUTPUT_H

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pixels {

enum class OutputFormat {
    Bgra, // four bytes B, G, R, A; A is 255
    Bgr,  // three bytes B, G, R
    Grey  // one byte, full range, the luma of BT.601
};

inline int bytesPerPixel(OutputFormat format) {
    return format == OutputFormat::Bgra ? 4 : format == OutputFormat::Bgr ? 3 : 1;
}

// Where a picture is to be written: memory of the caller's, top row first. What lies between the rows is left
// as it is.
struct Output {
    OutputFormat format;
    uint8_t* data;
    int width; // pixels
    int height;
    int stride; // bytes from row to row

    uint8_t* row(int y) const { return data + static_cast<ptrdiff_t>(y) * stride; }
    // Some of its rows.
    Output rows(int first, int count) const { return {format, row(first), width, count, stride}; }
    // Every second row.
    Output field(int first) const { return {format, row(first), width, height / 2, stride * 2}; }
};

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
