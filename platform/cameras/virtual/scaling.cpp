#include "platform/cameras/virtual/scaling.h"

#include <cstddef>
#include <cstring>
#include <libyuv.h>

namespace ostrel {
namespace cameras {

void makeOpaque(const BgraPicture<uint8_t>& picture) {
    for (int y = 0; y < picture.height; ++y) {
        uint8_t* row = picture.pixels + static_cast<ptrdiff_t>(y) * picture.stride;
        for (int x = 0; x < picture.width; ++x)
            row[4 * x + 3] = 255;
    }
}

bool scalePicture(const BgraPicture<const uint8_t>& from, const BgraPicture<uint8_t>& to) {
    int failed;
    if (from.width == to.width && from.height == to.height)
        failed = libyuv::ARGBCopy(from.pixels, from.stride, to.pixels, to.stride, to.width, to.height);
    else // the box filter is libyuv's bilinear one unless both sides shrink by more than two
        failed = libyuv::ARGBScale(from.pixels, from.stride, from.width, from.height, to.pixels, to.stride,
                                   to.width, to.height, libyuv::kFilterBox);
    if (failed)
        return false;
    // Not only for sources without alpha: libyuv's column filter turns 255 into 253.
    makeOpaque(to);
    return true;
}

} // namespace cameras
} // namespace ostrel
