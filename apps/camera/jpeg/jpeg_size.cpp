#include "apps/camera/jpeg/jpeg_size.h"

namespace ostrel::apps::cli {

namespace {

const uint8_t START_OF_PICTURE = 0xD8;
const uint8_t START_OF_SCAN = 0xDA;
const uint8_t FILL = 0xFF;

// Baseline, extended sequential, progressive: C0 to C2.
bool startsFrame(uint8_t marker) {
    return marker >= 0xC0 && marker <= 0xC2;
}

int number16(const uint8_t* at) {
    return at[0] << 8 | at[1];
}

} // namespace

std::optional<Size> jpegSize(const uint8_t* data, std::size_t bytes) {
    if (bytes < 4 || data[0] != 0xFF || data[1] != START_OF_PICTURE)
        return std::nullopt;
    std::optional<Size> size;
    // Segments: 0xFF, the marker, the length of what follows from itself on.
    for (std::size_t at = 2; at + 4 <= bytes && data[at] == 0xFF;) {
        const uint8_t marker = data[at + 1];
        if (marker == FILL) {
            ++at;
            continue;
        }
        if (marker == START_OF_SCAN)
            return size;
        const std::size_t length = static_cast<std::size_t>(number16(data + at + 2));
        if (startsFrame(marker) && length >= 8 && at + 9 <= bytes && data[at + 4] == 8)
            size = Size{number16(data + at + 7), number16(data + at + 5)};
        at += 2 + length;
    }
    return std::nullopt;
}

} // namespace ostrel::apps::cli
