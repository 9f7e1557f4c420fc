#include "platform/cameras/virtual/pattern_code.h"

#include <cstddef>

namespace ostrel {
namespace cameras {
namespace pattern {

namespace {

// Two pixels for each cell and each band: with less, scaling leaves no pixel that is a cell's alone.
const int LEAST_WIDTH = 2 * CODE_CELLS;
const int LEAST_HEIGHT = 2 * BANDS;

// Luma between these is neither black nor white.
const int DARKEST_WHITE = 144;
const int LIGHTEST_BLACK = 111;

// CRC-16 with the polynomial 0x1021 over the counter and the clock, starting at 0xFFFF and inverted, so that
// neither an all-black nor an all-white picture carries a right one.
uint16_t checkSum(const Stamp& stamp) {
    const uint64_t data = static_cast<uint64_t>(stamp.counter) << 32 | stamp.clock;
    uint32_t crc = 0xFFFF;
    for (int bit = 63; bit >= 0; --bit) {
        const uint32_t feed = (crc >> 15 ^ static_cast<uint32_t>(data >> bit)) & 1;
        crc = (crc << 1 & 0xFFFF) ^ (feed ? 0x1021 : 0);
    }
    return static_cast<uint16_t>(~crc);
}

struct Picture {
    const uint8_t* bgra;
    int width;
    int height;
    int stride;

    int luma(int x, int y) const {
        const uint8_t* p = bgra + static_cast<ptrdiff_t>(y) * stride + static_cast<ptrdiff_t>(x) * 4;
        return (29 * p[0] + 150 * p[1] + 77 * p[2]) >> 8;
    }
};

// Reads the line of cells that crosses pixel row y.
bool readRow(const Picture& picture, int y, uint64_t& cells) {
    // Three samples inside the middle half of the cell, one where cells are narrow.
    const int aside = picture.width / (CODE_CELLS * 8);
    uint64_t result = 0;
    for (int cell = 0; cell < CODE_CELLS; ++cell) {
        const int x = static_cast<int>(static_cast<int64_t>(2 * cell + 1) * picture.width / (2 * CODE_CELLS));
        const int luma = (picture.luma(x - aside, y) + picture.luma(x, y) + picture.luma(x + aside, y)) / 3;
        if (luma > LIGHTEST_BLACK && luma < DARKEST_WHITE)
            return false;
        result = result << 1 | (luma >= DARKEST_WHITE ? 1 : 0);
    }
    cells = result;
    return true;
}

// Reads a band in its upper and its lower half, which have to agree: a picture may be torn inside it.
bool readBand(const Picture& picture, int band, uint64_t& cells) {
    // At 35 % and 65 % of the band: scaling blurs what is closer to its edges.
    const int upper =
        static_cast<int>(static_cast<int64_t>(100 * band + 35) * picture.height / (100 * BANDS));
    const int lower =
        static_cast<int>(static_cast<int64_t>(100 * band + 65) * picture.height / (100 * BANDS));
    uint64_t again = 0;
    return readRow(picture, upper, cells) && readRow(picture, lower, again) && cells == again;
}

} // namespace

uint64_t codeLine(const Stamp& stamp, int line) {
    const uint64_t sum = checkSum(stamp);
    if (line == 0)
        return uint64_t(1) << 41 | static_cast<uint64_t>(stamp.counter) << 9 | sum >> 8 << 1;
    return uint64_t(1) << 41 | static_cast<uint64_t>(stamp.clock) << 9 | (sum & 0xFF) << 1 | 1;
}

bool readCode(const uint8_t* bgra, int width, int height, int stride, Stamp& stamp) {
    if (!bgra || width < LEAST_WIDTH || height < LEAST_HEIGHT || stride / 4 < width)
        return false;
    const Picture picture = {bgra, width, height, stride};
    Stamp found = {0, 0};
    for (int copy = 0; copy < CODE_COPIES; ++copy) {
        uint64_t first = 0, second = 0;
        if (!readBand(picture, CODE_BANDS[copy], first) || !readBand(picture, CODE_BANDS[copy] + 1, second))
            return false;
        const Stamp here = {static_cast<uint32_t>(first >> 9), static_cast<uint32_t>(second >> 9)};
        // Forming the cells anew checks the sum and the ends in one step.
        if (first != codeLine(here, 0) || second != codeLine(here, 1))
            return false;
        if (copy > 0 && (here.counter != found.counter || here.clock != found.clock))
            return false;
        found = here;
    }
    stamp = found;
    return true;
}

} // namespace pattern
} // namespace cameras
} // namespace ostrel
