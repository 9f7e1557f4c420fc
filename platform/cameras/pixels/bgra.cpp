#include "platform/cameras/pixels/bgra.h"

#include "platform/cameras/pixels/jpeg_decode.h"
#include "platform/cameras/pixels/planes.h"

#include <libyuv.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

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
        return libyuv::RAWToARGB(p.data, p.stride, to.data, to.stride, p.width, p.height) == 0;
    case Layout::Bgr:
        return libyuv::RGB24ToARGB(p.data, p.stride, to.data, to.stride, p.width, p.height) == 0;
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
        return libyuv::RGB565ToARGB(p.data, p.stride, to.data, to.stride, p.width, p.height) == 0;
    case Layout::Grey:
        return libyuv::J400ToARGB(p.data, p.stride, to.data, to.stride, p.width, p.height) == 0;
    default:
        return false;
    }
}

// Fills a picture in B, G, R, A of the given size and scales it.
template <typename Fill>
bool filledAndScaled(int width, int height, const Target& to, PixelPool& pool, Fill fill) {
    const int stride = width * 4;
    const PixelPool::Block block = pool.take(static_cast<size_t>(stride) * static_cast<size_t>(height));
    const Target whole = {block.data(), width, height, stride};
    if (!fill(whole))
        return false;
    scaleBgra({whole.data, width, height, stride}, to, pool);
    return true;
}

bool greyToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    const PixelPool::Block block = pool.take(static_cast<size_t>(to.width) * static_cast<size_t>(to.height));
    scalePlane({p.data, p.width, p.height, p.stride}, {block.data(), to.width, to.height, to.width}, pool);
    return libyuv::J400ToARGB(block.data(), to.width, to.data, to.stride, to.width, to.height) == 0;
}

bool rgbToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    if (p.width == to.width && p.height == to.height)
        return copyRgb(p, to);
    if (p.layout == Layout::Grey)
        return greyToBgra(p, to, pool);
    if (p.layout == Layout::Bgrx) {
        scaleBgra({p.data, p.width, p.height, p.stride}, to, pool);
        return true;
    }
    return filledAndScaled(p.width, p.height, to, pool,
                           [&](const Target& whole) { return copyRgb(p, whole); });
}

bool jpegToBgra(const Picture& p, const Target& to, PixelPool& pool) {
    const auto decode = [&p](const Target& whole) {
        return decodeJpeg(p.data, p.bytes, p.width, p.height, whole.data, whole.width, whole.height,
                          whole.stride);
    };
    int width = p.width, height = p.height;
    reduceForJpeg(width, height, to.width, to.height);
    if (width == to.width && height == to.height)
        return decode(to);
    return filledAndScaled(width, height, to, pool, decode);
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
