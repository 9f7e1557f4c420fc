// Raw pictures for tests, in any layout, drawn by the definitions of the colour standards.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_PIXELS_DRAWN_PICTURE_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_PIXELS_DRAWN_PICTURE_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace ostrel::tests {

struct Colour {
    int r, g, b;
};

// Every layout but Jpeg.
extern const std::vector<cameras::pixels::Layout> RAW_LAYOUTS;

bool isYuv(cameras::pixels::Layout layout);

// The luma of a colour, 0 to 255, by the weights of a matrix.
double lumaOf(const Colour& colour, cameras::pixels::YuvMatrix matrix);

// Red on the left above, green on the right above, blue and a light grey below: turned, mirrored or with
// colours exchanged, none of the four stays where it is.
Colour quadrantAt(int x, int y, int width, int height);

// How it is stored; what is not said is as simple as it can be.
struct Storage {
    cameras::pixels::YuvMatrix matrix = cameras::pixels::YuvMatrix::Bt601;
    int padding = 0; // bytes behind each row
    cameras::pixels::Fields fields = cameras::pixels::Fields::Woven;
    bool blocks = false; // each plane in memory of its own, as far from the next as possible
};

// Shows a colour for each pixel; 0xEE wherever no pixel is.
class DrawnPicture {
public:
    using Draw = std::function<Colour(int x, int y)>;
    DrawnPicture(cameras::pixels::Layout layout, int width, int height, const Draw& draw,
                 const Storage& storage = Storage());
    // Of the four quadrants.
    DrawnPicture(cameras::pixels::Layout layout, int width, int height, const Storage& storage = Storage());

    cameras::pixels::Picture picture;

private:
    void put(int x, int y, const Colour& colour);
    void set(size_t plane, int row, size_t at, int value);
    int rowInMemory(int row, int rows) const;

    std::vector<uint8_t> bytes_[3];
    struct {
        int which; // of bytes_
        size_t begin;
        size_t stride;
        int rows;
    } planes_[3] = {};
};

} // namespace ostrel::tests

#endif
