// Pictures in the layouts of the C interface.
#ifndef OSTREL_BINDINGS_C_PIXELS_H
#define OSTREL_BINDINGS_C_PIXELS_H

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace c {

const int32_t LARGEST_SIDE = 16384; // of a picture, in pixels

// Of a picture without padding, whose sides are from 1 on. Throws when there is no such layout.
size_t pictureBytes(int32_t layout, int width, int height);

// A row of BGR or GREY as BGRA.
void spreadRow(const uint8_t* from, int32_t layout, uint8_t* bgra, int width);

} // namespace c
} // namespace ostrel

#endif
