// Pictures of luma and chroma, as B, G, R, A of any size.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PLANES_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PLANES_H

#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/scaling.h"

namespace ostrel {
namespace cameras {
namespace pixels {

enum class Chroma {
    Halved,        // 4:2:0: half the columns, half the rows, both rounded up
    HalvedColumns, // 4:2:2
    Full,          // 4:4:4
    None           // Y alone
};

int chromaWidth(Chroma chroma, int width);
int chromaHeight(Chroma chroma, int height);

// Three planes of their own, or one.
template <typename Byte>
struct Planes {
    Chroma chroma;
    int width; // pixels
    int height;
    Byte* y;
    Byte* u; // null without chroma
    Byte* v;
    int stride; // bytes
    int chromaStride;
};

bool isYuv(Layout layout);

// The picture must be of a YUV layout and have all of its bytes. Re-entrant.
bool yuvToBgra(const Picture& picture, const Target& to, PixelPool& pool);

// Sizes must be sane. Re-entrant.
bool yuvToBgra(const Planes<const uint8_t>& planes, YuvMatrix matrix, const Target& to, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
