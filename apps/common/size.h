// Frame sizes as they are written on the command line.
#ifndef OSTREL_APPS_COMMON_SIZE_H
#define OSTREL_APPS_COMMON_SIZE_H

#include <ostrel/processing.h>

#include <optional>
#include <string>

namespace ostrel::apps {

struct Size {
    int width = 0; // pixels
    int height = 0;

    bool empty() const { return width == 0 || height == 0; }
    bool even() const { return width % 2 == 0 && height % 2 == 0; }
    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
    bool operator!=(const Size& other) const { return !(*this == other); }
};

// Pixels. Larger frames would not fit the library's 32-bit sizes.
const int MAXIMUM_EXTENT = 16384;

// What a message says that parseSize() takes.
const char SIZE_NAMES[] = "WIDTHxHEIGHT, ld (320x240), sd (640x480), hd (1280x720) or 1080p";

// "640x480" with sides from 1 to MAXIMUM_EXTENT, a level by its name (ld, sd, hd), or the height of a usual
// size with a p (240p to 2160p); letter case ignored. Nothing for anything else.
std::optional<Size> parseSize(const std::string& text);

Size sizeOf(VIDEO_QUALITY level);
std::optional<VIDEO_QUALITY> levelOf(const Size& size);
std::string toString(const Size& size); // "640x480"

} // namespace ostrel::apps

#endif
