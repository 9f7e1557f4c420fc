// Rectangles and digits drawn into a picture of B, G, R, A.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_CANVAS_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_CANVAS_H

#include <cstdint>

namespace ostrel {
namespace cameras {

struct Colour {
    uint8_t red, green, blue;
};

const Colour BLACK = {0, 0, 0};
const Colour WHITE = {255, 255, 255};

// Draws into memory that it does not own; what lies outside the picture is cut off. Any alignment, any stride
// of at least four bytes a pixel.
class Canvas {
public:
    // Characters are five by seven dots of scale x scale pixels; the next begins six dots further.
    static const int GLYPH_WIDTH = 5;
    static const int GLYPH_HEIGHT = 7;
    static const int ADVANCE = 6;

    Canvas(uint8_t* bgra, int width, int height, int stride)
        : pixels_(bgra), width_(width), height_(height), stride_(stride) {}

    int width() const { return width_; }
    int height() const { return height_; }
    uint8_t* row(int y) const;

    // From left, top up to, but not including, right, bottom.
    void fill(int left, int top, int right, int bottom, const Colour& colour);
    // Digits, blanks and the capital letters of the pattern's words; any other character is left out.
    void text(int left, int top, int scale, const char* characters, const Colour& colour);

private:
    uint8_t* pixels_;
    int width_;
    int height_;
    int stride_;
};

} // namespace cameras
} // namespace ostrel

#endif
