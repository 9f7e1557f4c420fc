// Frame sizes as they are written on the command line.
#ifndef OSTREL_APPS_CAMERA_SIZE_H
#define OSTREL_APPS_CAMERA_SIZE_H

#include <ostrel/processing.h>

#include <optional>
#include <string>

namespace ostrel {
namespace cli {

struct Size {
    int width = 0; // pixels
    int height = 0;

    bool empty() const { return width == 0 || height == 0; }
    bool even() const { return width % 2 == 0 && height % 2 == 0; }
    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
    bool operator!=(const Size& other) const { return !(*this == other); }
};

// Larger frames would not fit the library's 32-bit sizes.
const int MAXIMUM_EXTENT = 16384;

// "640x480", or a level by its name: ld, sd, hd (letter case ignored). Nothing when the text is neither, or a
// side is below 1 or above MAXIMUM_EXTENT.
std::optional<Size> parseSize(const std::string& text);
std::optional<VIDEO_QUALITY> parseLevel(const std::string& text);

Size sizeOf(VIDEO_QUALITY level);
std::optional<VIDEO_QUALITY> levelOf(const Size& size);
std::string toString(const Size& size); // "640x480"

} // namespace cli
} // namespace ostrel

#endif
