// A picture as a camera delivers it, and how many bytes it takes.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PICTURE_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PICTURE_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {
namespace pixels {

// Named by the order of the bytes in memory.
enum class Layout {
    Yuyv,
    Uyvy,
    Yvyu,
    Vyuy,
    Nv12,     // Y; U and V interleaved, both axes halved
    Nv21,     // Y; V and U interleaved
    Nv16,     // as Nv12, columns halved
    Nv24,     // as Nv12, nothing halved
    P010,     // as Nv12 in 16 bits, little endian, the upper ten used
    I420,     // Y; U; V, both axes halved
    Yv12,     // Y; V; U, both axes halved
    I422,     // Y; U; V, columns halved
    I444,     // Y; U; V
    Luma,     // Y alone, in the range of the matrix
    Rgb,      // three bytes R, G, B
    Bgr,      // three bytes B, G, R
    Bgrx,     // four bytes, as in the result; the fourth is not trusted
    Xrgb,     // four bytes X, R, G, B
    Rgbx,     // four bytes R, G, B, X
    Rgb565,   // 16 bits, little endian, red on top
    Rgb565Be, // the same, big endian
    Grey,     // one byte, full range
    Grey10,   // 16 bits, little endian, the lower ten used, full range
    Grey12,
    Grey16,
    Grey16Be, // big endian
    Jpeg,
    Opaque // no picture can be made of it: bytes to be handed on as they are
};

// What the numbers of Y, U and V mean.
enum class YuvMatrix { Bt601, Bt601Full, Bt709, Bt709Full, Bt2020, Bt2020Full };

bool isFullRange(YuvMatrix matrix);

// How many samples of U and V there are.
enum class Chroma {
    Halved,        // 4:2:0: half the columns, half the rows, both rounded up
    HalvedColumns, // 4:2:2
    Full,          // 4:4:4
    None           // Y alone, or no Y at all
};

Chroma chromaOf(Layout layout);
int chromaWidth(Chroma chroma, int width);
int chromaHeight(Chroma chroma, int height);

// Where the rows of each plane are.
enum class Fields {
    Woven,      // from top to bottom
    TopFirst,   // the rows 0, 2, 4, ..., then the rows 1, 3, 5, ...
    BottomFirst // the rows 1, 3, 5, ..., then the rows 0, 2, 4, ...
};

struct Plane {
    const uint8_t* data = nullptr;
    size_t bytes = 0; // that may be read, more than the rows need or not
    int stride = 0;   // bytes from row to row; unused for Jpeg, as the driver says for Opaque
};

struct Picture {
    Layout layout = Layout::Bgrx;
    YuvMatrix matrix = YuvMatrix::Bt601;
    Fields fields = Fields::Woven; // unused for Jpeg
    int width = 0;                 // pixels; unused for Jpeg, whose header tells
    int height = 0;
    std::array<Plane, 3> planes; // in the order of the layout's name; Jpeg has one
};

int planeCount(Layout layout);

// Rows as they are in memory.
struct PlaneShape {
    size_t rowBytes = 0; // without padding
    int rows = 0;
};
PlaneShape planeShape(Layout layout, int plane, int width, int height);

// From the first byte to the last of one plane; all that there is of a Jpeg and of Opaque.
size_t bytesOfPlane(const Picture& picture, int plane);

// For planes that lie in one block of memory, one after the other without gaps: rows of chroma are as long as
// those of the first plane, padding and all, or half or twice as long, as the layout has it.
//
// The length of a row of the first plane without padding; 0 for Jpeg and Opaque.
int minimumStride(Layout layout, int width);
// What a driver says of its rows, within reason: zero, and what some leave there, means rows without padding.
// `least`: what a row needs.
int saneStride(uint32_t told, size_t least);
// How many bytes a picture takes from its first to its last. Padding behind the last row is not asked for:
// some drivers count it in, others do not. 1 for Jpeg and Opaque.
size_t neededBytes(Layout layout, int width, int height, int stride);
// Sets the picture's planes, by its layout and size. Each may be read to the end of the block; one that lies
// beyond gets no bytes.
void setBlock(Picture& picture, const uint8_t* data, size_t bytes, int stride);

// Why a picture cannot be shown.
enum class Fault {
    None,
    Empty,
    Truncated,
    NotJpeg,
    Unsupported, // a kind of JPEG that no camera makes
    Undecodable
};

// In a few words, for the counters.
const char* reason(Fault fault);

// What can be told without decoding: whether the bytes are there. Of a JPEG without its end marker the
// compressed data is read as well (about a third of what decoding costs).
Fault faultOf(const Picture& picture);

// What turning one pixel into B, G, R, A costs, in parts of what copying it costs. For ranking only.
int decodeCost(Layout layout);

// Whether pictures can be as large.
bool sizeIsSane(int width, int height);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
