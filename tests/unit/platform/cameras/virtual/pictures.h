// Pictures for the tests of the virtual cameras.
#ifndef OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_PICTURES_H
#define OSTREL_TESTS_UNIT_PLATFORM_CAMERAS_VIRTUAL_PICTURES_H

#include <ostrel/virtual_camera.h>

#include "platform/cameras/virtual/pattern_painter.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace ostrel::tests {

struct Bgra {
    Bgra(int w, int h, int padding = 0)
        : width(w), height(h), stride(w * 4 + padding),
          bytes(static_cast<size_t>(stride) * static_cast<size_t>(h), 0xCD) {}

    uint8_t* at(int x, int y) { return bytes.data() + static_cast<ptrdiff_t>(y) * stride + x * 4; }
    const uint8_t* at(int x, int y) const {
        return bytes.data() + static_cast<ptrdiff_t>(y) * stride + x * 4;
    }

    int width, height, stride;
    std::vector<uint8_t> bytes;
};

// Painters are kept from call to call: each draws its standing part once. For the tests' own thread alone.
inline Bgra pattern(int nativeWidth, int nativeHeight, uint32_t counter, uint32_t clock, int width = 0,
                    int height = 0) {
    static std::map<std::pair<int, int>, cameras::PatternPainter> painters;
    Bgra picture(width ? width : nativeWidth, height ? height : nativeHeight);
    cameras::PatternPainter& painter =
        painters
            .emplace(std::piecewise_construct, std::forward_as_tuple(nativeWidth, nativeHeight),
                     std::forward_as_tuple(nativeWidth, nativeHeight))
            .first->second;
    if (!painter.paint({counter, clock}, picture.bytes.data(), picture.width, picture.height, picture.stride))
        picture.bytes.clear();
    return picture;
}

inline bool decode(const Bgra& picture, uint32_t& counter, uint32_t& clock) {
    return OVideoTestPatternCamera::decode(picture.bytes.data(), picture.width, picture.height,
                                           picture.stride, counter, clock);
}

} // namespace ostrel::tests

#endif
