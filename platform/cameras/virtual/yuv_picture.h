// Planar pictures of 8-bit Y, U and V, the planes one after the other without padding.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_YUV_PICTURE_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_YUV_PICTURE_H

#include "platform/cameras/pixels/picture.h"

#include <cstddef>
#include <cstdint>

namespace ostrel {
namespace cameras {

using pixels::Chroma;

struct YuvLayout {
    int width = 0;
    int height = 0;
    Chroma chroma = Chroma::Halved;
    bool fullRange = false; // Y from 0 to 255 instead of 16 to 235

    // Four characters.
    const char* code() const {
        switch (chroma) {
        case Chroma::Halved:
            return "I420";
        case Chroma::HalvedColumns:
            return "I422";
        case Chroma::Full:
            return "I444";
        case Chroma::None:
            break;
        }
        return "GREY";
    }
    int chromaWidth() const { return pixels::chromaWidth(chroma, width); }
    int chromaHeight() const { return pixels::chromaHeight(chroma, height); }
    size_t lumaBytes() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    size_t chromaBytes() const { // of one of the two planes
        return static_cast<size_t>(chromaWidth()) * static_cast<size_t>(chromaHeight());
    }
    size_t bytes() const { return lumaBytes() + 2 * chromaBytes(); }
};

// The picture in such planes. The colours are BT.601.
pixels::Picture yuvPicture(const YuvLayout& layout, const uint8_t* planes);

} // namespace cameras
} // namespace ostrel

#endif
