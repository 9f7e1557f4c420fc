// The cells of the test pattern: a frame counter and a clock that a program reads back from the picture.
//
// The code is 84 cells, white for one, in two lines of 42:
//   1, the counter's 32 bits, the check sum's upper 8 bits, 0
//   1, the clock's 32 bits, the check sum's lower 8 bits, 1
// each most significant bit first. Their ends tell a picture that is mirrored, upside down or both. The two
// lines stand three times, at the top edge, in the middle and at the bottom edge: a torn frame has different
// ones.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PATTERN_CODE_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PATTERN_CODE_H

#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pattern {

// The picture is laid out in this many horizontal bands of equal height.
const int BANDS = 30;
const int CODE_CELLS = 42;
const int CODE_LINES = 2;
const int CODE_COPIES = 3;
// The band of the first line of each copy; the second line is the band below.
const int CODE_BANDS[CODE_COPIES] = {0, 14, 28};

struct Stamp {
    uint32_t counter;
    uint32_t clock;
};

// The cells of one line, the leftmost in bit 41.
uint64_t codeLine(const Stamp& stamp, int line);

// False, with the stamp untouched, when the cells cannot be read. Allocates nothing. Re-entrant.
bool readCode(const uint8_t* bgra, int width, int height, int stride, Stamp& stamp);

} // namespace pattern
} // namespace cameras
} // namespace ostrel

#endif
