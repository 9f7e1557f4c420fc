// Where fuzzed pictures are drawn.
#ifndef OSTREL_FUZZ_PIXELS_CANVAS_H
#define OSTREL_FUZZ_PIXELS_CANVAS_H

#include "fuzz/support/check.h"
#include "fuzz/support/fenced_buffer.h"

#include "platform/cameras/pixels/convert.h"

#include <cstring>

namespace fuzz {

// Converts, and checks that nothing but the rows was written and that all of them is opaque.
inline ostrel::cameras::pixels::Fault draw(const ostrel::cameras::pixels::Picture& picture,
                                           ostrel::cameras::pixels::OutputFormat format, int width,
                                           int height, int padding) {
    namespace pixels = ostrel::cameras::pixels;
    const int row = width * pixels::bytesPerPixel(format), stride = row + padding;
    FencedBuffer target(static_cast<size_t>(stride) * static_cast<size_t>(height));
    std::memset(target.data(), 0x5A, target.size());
    pixels::PixelPool pool;
    const pixels::Fault fault =
        pixels::convert(picture, {format, target.data(), width, height, stride}, pool);
    CHECK(target.startIntact());
    for (int y = 0; y < height; ++y) {
        const size_t start = static_cast<size_t>(y) * static_cast<size_t>(stride);
        if (fault == pixels::Fault::None && format == pixels::OutputFormat::Bgra)
            for (int x = 3; x < row; x += 4)
                CHECK(target[start + static_cast<size_t>(x)] == 255);
        for (int x = row; x < stride; ++x)
            CHECK(target[start + static_cast<size_t>(x)] == 0x5A);
    }
    return fault;
}

} // namespace fuzz

#endif
