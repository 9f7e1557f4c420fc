#include "platform/cameras/pixels/bgra.h"

#include "platform/cameras/pixels/jpeg_decode.h"
#include "platform/cameras/pixels/planes.h"

#include <cstring>
#include <libyuv.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

struct Target {
    uint8_t* bgra;
    int width;
    int height;
    int stride;

    uint8_t* row(int y) const { return bgra + static_cast<ptrdiff_t>(y) * stride; }
};

// Four bytes to four bytes, by their places: the fourth byte of a camera's pixel is often 0.
template <int B, int G, int R>
void shuffle(const Picture& p, const Target& to) {
    for (int y = 0; y < p.height; ++y) {
        const uint8_t* in = p.data + static_cast<ptrdiff_t>(y) * p.stride;
        uint8_t* out = to.row(y);
        for (int x = 0; x < p.width; ++x, in += 4, out += 4) {
            out[0] = in[B];
            out[1] = in[G];
            out[2] = in[R];
            out[3] = 255;
        }
    }
}

// A picture of RGB or grey at its own size.
bool copyRgb(const Picture& p, const Target& to) {
    switch (p.layout) {
    case Layout::Rgb:
        return libyuv::RAWToARGB(p.data, p.stride, to.bgra, to.stride, p.width, p.height) == 0;
    case Layout::Bgr:
        return libyuv::RGB24ToARGB(p.data, p.stride, to.bgra, to.stride, p.width, p.height) == 0;
    case Layout::Bgrx:
        shuffle<0, 1, 2>(p, to);
        return true;
    case Layout::Xrgb:
        shuffle<3, 2, 1>(p, to);
        return true;
    case Layout::Rgbx:
        shuffle<2, 1, 0>(p, to);
        return true;
    case Layout::Rgb565:
        return libyuv::RGB565ToARGB(p.data, p.stride, to.bgra, to.stride, p.width, p.height) == 0;
    case Layout::Grey:
        return libyuv::J400ToARGB(p.data, p.stride, to.bgra, to.stride, p.width, p.height) == 0;
    default:
        return false;
    }
}

// Scales B, G, R, A colour by colour. libyuv could scale it as it stands, but with weights of seven bits,
// which turn white into 253.
bool scaleBgra(const Target& from, const Target& to, PixelPool& pool) {
    const size_t large = static_cast<size_t>(from.width) * static_cast<size_t>(from.height);
    const size_t small = static_cast<size_t>(to.width) * static_cast<size_t>(to.height);
    const PixelPool::Block block = pool.take(4 * large + 3 * small);
    uint8_t* whole[4];
    uint8_t* scaled[3];
    for (size_t i = 0; i < 4; ++i)
        whole[i] = block.data() + i * large;
    for (size_t i = 0; i < 3; ++i)
        scaled[i] = block.data() + 4 * large + i * small;
    const int w = from.width;
    libyuv::SplitARGBPlane(from.bgra, from.stride, whole[0], w, whole[1], w, whole[2], w, whole[3], w, w,
                           from.height);
    for (size_t i = 0; i < 3; ++i)
        libyuv::ScalePlane(whole[i], w, w, from.height, scaled[i], to.width, to.width, to.height,
                           libyuv::kFilterBox);
    libyuv::MergeARGBPlane(scaled[0], to.width, scaled[1], to.width, scaled[2], to.width, nullptr, 0, to.bgra,
                           to.stride, to.width, to.height);
    return true;
}

// Fills a picture in B, G, R, A of the given size and scales it.
template <typename Fill>
bool filledAndScaled(int width, int height, const Target& to, PixelPool& pool, Fill fill) {
    const int stride = width * 4;
    const PixelPool::Block block = pool.take(static_cast<size_t>(stride) * static_cast<size_t>(height));
    const Target whole = {block.data(), width, height, stride};
    return fill(whole) && scaleBgra(whole, to, pool);
}

bool greyToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    const PixelPool::Block block = pool.take(static_cast<size_t>(to.width) * static_cast<size_t>(to.height));
    libyuv::ScalePlane(p.data, p.stride, p.width, p.height, block.data(), to.width, to.width, to.height,
                       libyuv::kFilterBox);
    return libyuv::J400ToARGB(block.data(), to.width, to.bgra, to.stride, to.width, to.height) == 0;
}

bool rgbToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    if (p.width == to.width && p.height == to.height)
        return copyRgb(p, to);
    if (p.layout == Layout::Grey)
        return greyToBgra(p, to, pool);
    return filledAndScaled(p.width, p.height, to, pool,
                           [&](const Target& whole) { return copyRgb(p, whole); });
}

bool jpegToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    const auto decode = [&p](const Target& whole) {
        return decodeJpeg(p.data, p.bytes, p.width, p.height, whole.bgra, whole.width, whole.height,
                          whole.stride);
    };
    int width = p.width, height = p.height;
    reduceForJpeg(width, height, to.width, to.height);
    if (width == to.width && height == to.height)
        return decode(to);
    return filledAndScaled(width, height, to, pool, decode);
}

// Scaled as planes, which have less than half the bytes of the result.
bool yuvToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    if (p.width == to.width && p.height == to.height)
        return planesToBgra(p, to.bgra, to.stride, pool);
    const size_t bytes =
        neededBytes(Layout::I420, to.width, to.height, minimumStride(Layout::I420, to.width));
    PixelPool::Block block = pool.take(bytes);
    Picture small;
    small.layout = Layout::I420;
    small.matrix = p.matrix;
    small.width = to.width;
    small.height = to.height;
    small.stride = minimumStride(Layout::I420, to.width);
    small.data = block.data();
    small.bytes = bytes;
    return scalePlanes(p, block.data(), small, pool) && planesToBgra(small, to.bgra, to.stride, pool);
}

// Keeps every product of a size within what libyuv's int arithmetic holds.
const int kLargestSide = 16384;

bool sizeIsSane(int width, int height) {
    return width > 0 && height > 0 && width <= kLargestSide && height <= kLargestSide;
}

} // namespace

bool toBgra(const Picture& p, uint8_t* bgra, int width, int height, int stride, PixelPool& pool) {
    if (!sizeIsSane(width, height) || !sizeIsSane(p.width, p.height) || stride < width * 4)
        return false;
    if (p.stride < minimumStride(p.layout, p.width))
        return false;
    if (p.bytes < neededBytes(p.layout, p.width, p.height, p.stride))
        return false;
    const Target to = {bgra, width, height, stride};
    if (p.layout == Layout::Jpeg)
        return jpegToBgra(p, to, pool);
    if (isYuv(p.layout))
        return yuvToBgra(p, to, pool);
    return rgbToBgra(p, to, pool);
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
