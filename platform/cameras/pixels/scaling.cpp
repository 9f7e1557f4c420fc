#include "platform/cameras/pixels/scaling.h"

#include <libyuv.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

size_t area(int width, int height) {
    return static_cast<size_t>(width) * static_cast<size_t>(height);
}

void scale(const Source& from, const Target& to, libyuv::FilterMode filter) {
    libyuv::ScalePlane(from.data, from.stride, from.width, from.height, to.data, to.stride, to.width,
                       to.height, filter);
}

// libyuv averages over boxes of pixels when both sides shrink by more than two, and cuts the fraction off:
// white becomes 254. Of quarters it rounds the average.
bool wouldCutOff(const Source& from, const Target& to) {
    if (4 * to.width == from.width && 4 * to.height == from.height)
        return false;
    return 2 * to.width < from.width && 2 * to.height < from.height;
}

} // namespace

void scalePlane(const Source& from, const Target& to, PixelPool& pool) {
    Source rest = from;
    PixelPool::Block block;
    while (wouldCutOff(rest, to)) {
        const int width = (rest.width + 1) / 2, height = (rest.height + 1) / 2;
        PixelPool::Block next = pool.take(area(width, height));
        const Target half = {next.data(), width, height, width};
        scale(rest, half, libyuv::kFilterBilinear); // every pixel counts, as nothing shrinks by more than two
        rest = {half.data, width, height, width};
        block = std::move(next);
    }
    scale(rest, to, libyuv::kFilterBox); // the bilinear filter, unless it is for quarters
}

// Colour by colour: libyuv could scale the picture as it stands, but with weights of seven bits, which turn
// white into 253.
void scaleBgra(const Source& from, const Output& to, PixelPool& pool) {
    const size_t large = area(from.width, from.height);
    const size_t small = area(to.width, to.height);
    const PixelPool::Block block = pool.take(4 * large + 3 * small);
    uint8_t* whole[4];
    uint8_t* scaled[3];
    for (size_t i = 0; i < 4; ++i)
        whole[i] = block.data() + i * large;
    for (size_t i = 0; i < 3; ++i)
        scaled[i] = block.data() + 4 * large + i * small;
    const int w = from.width;
    libyuv::SplitARGBPlane(from.data, from.stride, whole[0], w, whole[1], w, whole[2], w, whole[3], w, w,
                           from.height);
    for (size_t i = 0; i < 3; ++i)
        scalePlane({whole[i], w, from.height, w}, {scaled[i], to.width, to.height, to.width}, pool);
    if (to.format == OutputFormat::Bgr)
        libyuv::MergeRGBPlane(scaled[2], to.width, scaled[1], to.width, scaled[0], to.width, to.data,
                              to.stride, to.width, to.height);
    else
        libyuv::MergeARGBPlane(scaled[0], to.width, scaled[1], to.width, scaled[2], to.width, nullptr, 0,
                               to.data, to.stride, to.width, to.height);
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
