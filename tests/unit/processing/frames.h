// Frames, destinations between guard bytes and reference arithmetic for the tests of conversion and scaling.
#ifndef OSTREL_TESTS_UNIT_PROCESSING_FRAMES_H
#define OSTREL_TESTS_UNIT_PROCESSING_FRAMES_H

#include <array>
#include <ostream>
#include <stddef.h>
#include <stdint.h>
#include <string>
#include <vector>

namespace ostrel::tests {

typedef std::vector<uint8_t> Bytes;

struct Size {
    int width;
    int height;
};

std::ostream& operator<<(std::ostream& out, const Size& size);

// The three levels, small and awkward even sizes, and odd ones.
const std::vector<Size>& evenSizes();
const std::vector<Size>& oddSizes();
std::vector<Size> allSizes();

// Bytes of a frame; for odd sizes as far as libyuv reaches with planes and rows that are not rounded up.
size_t argbBytes(Size size);
size_t rgb24Bytes(Size size);
size_t yuy2Bytes(Size size);
size_t i420Bytes(Size size);

// Bytes that look random and are the same on every run.
Bytes noise(size_t count, uint32_t seed);

// A destination with guard bytes before and after it; it starts out filled with FILL.
class Guarded {
public:
    static constexpr uint8_t FILL = 0xA5;

    explicit Guarded(size_t count);
    uint8_t* data() { return all_.data() + GUARD; }
    Bytes bytes() const { return Bytes(all_.begin() + GUARD, all_.end() - GUARD); }
    bool guardsIntact() const;
    // Whether nothing was written at all.
    bool untouched() const;

private:
    static constexpr int GUARD = 128;
    Bytes all_;
};

// A colour of an RGB frame and what BT.601 in limited range makes of it.
struct Rgb {
    int r;
    int g;
    int b;
};

struct Yuv {
    double y;
    double u;
    double v;
};

Yuv bt601(Rgb colour);
// Of a byte triple back to R, G, B, cut to 0..255.
std::array<double, 3> bt601Inverse(int y, int u, int v);

extern const Rgb WHITE, BLACK, RED, GREEN, BLUE, YELLOW, CYAN, MAGENTA;
// The eight above and sixteen greys.
std::vector<Rgb> testColours();
// Upper left, upper right, lower left, lower right of a picture.
const std::array<Rgb, 4>& quadrantColours();

// A picture as a function of position, written as a frame of one layout with the top row first. YUV values
// are rounded; chroma is taken at the upper left pixel of the ones that share it.
typedef Rgb (*Picture)(Size size, int x, int y);
Rgb quadrants(Size size, int x, int y);
Rgb redTopRow(Size size, int x, int y); // the rest is blue
Bytes drawArgb(Picture picture, Size size, uint8_t alpha);
Bytes drawRgb24(Picture picture, Size size);
Bytes drawYuy2(Picture picture, Size size);
Bytes drawI420(Picture picture, Size size);

// The colour at a pixel of a frame whose top row is first.
struct Pixel {
    int y;
    int u;
    int v;
};

Pixel i420Pixel(const Bytes& frame, Size size, int x, int y);
Pixel yuy2Pixel(const Bytes& frame, Size size, int x, int y);
Rgb argbPixel(const Bytes& frame, Size size, int x, int y);

// Empty when the colour is the expected one within a tolerance for each component, else what differs.
std::string difference(Pixel actual, Rgb expected, double tolerance);
std::string difference(Rgb actual, Rgb expected, double tolerance);

} // namespace ostrel::tests

#endif
