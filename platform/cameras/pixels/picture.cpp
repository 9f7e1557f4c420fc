#include "platform/cameras/pixels/picture.h"

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// Bytes from the start of the buffer to the end of the last row of the last plane. Padding behind the last
// row is not asked for: some drivers count it in, others do not.
size_t planes(size_t stride, size_t rows, size_t chromaStride, size_t chromaRows, size_t chromaPlanes,
              size_t lastRow) {
    return stride * rows + chromaStride * chromaRows * chromaPlanes - (chromaStride - lastRow);
}

} // namespace

int minimumStride(Layout layout, int width) {
    switch (layout) {
    case Layout::Yuyv:
    case Layout::Uyvy:
    case Layout::Yvyu:
    case Layout::Vyuy:
        return (width + 1) / 2 * 4;
    case Layout::Nv12:
    case Layout::Nv21:
    case Layout::I420:
    case Layout::Yv12:
    case Layout::I422:
        return (width + 1) / 2 * 2;
    case Layout::Rgb:
    case Layout::Bgr:
        return width * 3;
    case Layout::Bgrx:
    case Layout::Xrgb:
    case Layout::Rgbx:
        return width * 4;
    case Layout::Rgb565:
        return width * 2;
    case Layout::Grey:
        return width;
    case Layout::Jpeg:
        break;
    }
    return 0;
}

size_t neededBytes(Layout layout, int width, int height, int stride) {
    const auto row = static_cast<size_t>(minimumStride(layout, width));
    const auto full = static_cast<size_t>(stride);
    const auto rows = static_cast<size_t>(height);
    const size_t halfRows = (rows + 1) / 2;
    switch (layout) {
    case Layout::Nv12:
    case Layout::Nv21:
        return planes(full, rows, full, halfRows, 1, row);
    case Layout::I420:
    case Layout::Yv12:
        return planes(full, rows, full / 2, halfRows, 2, row / 2);
    case Layout::I422:
        return planes(full, rows, full / 2, rows, 2, row / 2);
    case Layout::Jpeg:
        return 1;
    default:
        return full * (rows - 1) + row;
    }
}

int decodeCost(Layout layout) {
    // Measured at 1280x720 against a copy of the same traffic.
    switch (layout) {
    case Layout::Bgrx:
    case Layout::Bgr:
        return 10;
    case Layout::Rgb:
    case Layout::Xrgb:
    case Layout::Rgbx:
        return 11;
    case Layout::Yuyv:
    case Layout::Uyvy:
        return 22;
    case Layout::Nv12:
    case Layout::Nv21:
        return 25;
    case Layout::I420:
    case Layout::Yv12:
    case Layout::I422:
        return 29;
    case Layout::Yvyu:
    case Layout::Vyuy:
        return 35;
    case Layout::Rgb565:
        return 40; // few colours
    case Layout::Grey:
        return 50; // no colours: only for cameras that have nothing else
    case Layout::Jpeg:
        break;
    }
    return 300;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
