#include "platform/cameras/pixels/rgb.h"

#include "platform/cameras/pixels/bands.h"
#include "platform/cameras/pixels/scaling.h"

#include <algorithm>
#include <libyuv.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// As libyuv's: from, its stride, to, its stride, width, height; 0 when done.
using Rows = int (*)(const uint8_t*, int, uint8_t*, int, int, int);

template <typename Row>
int eachRow(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int height, Row row) {
    for (int y = 0; y < height; ++y)
        row(from + static_cast<ptrdiff_t>(y) * fromStride, to + static_cast<ptrdiff_t>(y) * toStride);
    return 0;
}

// Four bytes to four or three, by their places: the fourth byte of a camera's pixel is often 0.
template <int B, int G, int R, int Bytes>
int shuffle(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height) {
    return eachRow(from, fromStride, to, toStride, height, [width](const uint8_t* in, uint8_t* out) {
        for (int x = 0; x < width; ++x, in += 4, out += Bytes) {
            out[0] = in[B];
            out[1] = in[G];
            out[2] = in[R];
            if (Bytes == 4)
                out[3] = 255;
        }
    });
}

int copyBgr(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height) {
    libyuv::CopyPlane(from, fromStride, to, toStride, width * 3, height);
    return 0;
}

// A few pixels at a time are brought into libyuv's order of bytes.
int rgb565BeToBgra(const uint8_t* from, int fromStride, uint8_t* to, int toStride, int width, int height) {
    const int most = 256;
    return eachRow(from, fromStride, to, toStride, height, [&](const uint8_t* in, uint8_t* out) {
        uint8_t swapped[most * 2];
        for (int x = 0; x < width; x += most, in += most * 2, out += most * 4) {
            const int count = std::min(most, width - x);
            for (int i = 0; i < count * 2; i += 2) {
                swapped[i] = in[i + 1];
                swapped[i + 1] = in[i];
            }
            libyuv::RGB565ToARGB(swapped, count * 2, out, count * 4, count, 1);
        }
    });
}

Rows toBgra(Layout layout) {
    switch (layout) {
    case Layout::Rgb:
        return libyuv::RAWToARGB;
    case Layout::Bgr:
        return libyuv::RGB24ToARGB;
    case Layout::Bgrx:
        return shuffle<0, 1, 2, 4>;
    case Layout::Xrgb:
        return shuffle<3, 2, 1, 4>;
    case Layout::Rgbx:
        return shuffle<2, 1, 0, 4>;
    case Layout::Rgb565:
        return libyuv::RGB565ToARGB;
    case Layout::Rgb565Be:
        return rgb565BeToBgra;
    default:
        return nullptr;
    }
}

Rows toBgr(Layout layout) {
    switch (layout) {
    case Layout::Rgb:
        return libyuv::RAWToRGB24;
    case Layout::Bgr:
        return copyBgr;
    case Layout::Bgrx:
        return libyuv::ARGBToRGB24;
    case Layout::Xrgb:
        return shuffle<3, 2, 1, 3>;
    case Layout::Rgbx:
        return shuffle<2, 1, 0, 3>;
    default:
        return nullptr;
    }
}

Rows toGrey(Layout layout) {
    switch (layout) {
    case Layout::Rgb:
        return libyuv::RAWToJ400;
    case Layout::Bgr:
        return libyuv::RGB24ToJ400;
    case Layout::Bgrx:
        return libyuv::ARGBToJ400;
    case Layout::Rgbx:
        return libyuv::ABGRToJ400;
    default:
        return nullptr;
    }
}

Rows directly(Layout layout, OutputFormat format) {
    return format == OutputFormat::Bgra  ? toBgra(layout)
           : format == OutputFormat::Bgr ? toBgr(layout)
                                         : toGrey(layout);
}

bool run(Rows rows, const Picture& p, const Output& to) {
    return rows(p.planes[0].data, p.planes[0].stride, to.data, to.stride, p.width, p.height) == 0;
}

bool atOwnSize(const Picture& p, const Output& to, PixelPool& pool) {
    if (const Rows rows = directly(p.layout, to.format))
        return run(rows, p, to);
    const Rows first = toBgra(p.layout);
    if (!first)
        return false;
    const Rows second = directly(Layout::Bgrx, to.format);
    const int stride = p.width * 4;
    const PixelPool::Block block = pool.take(static_cast<size_t>(stride) * BAND_ROWS);
    return inBands(p, to, [&](const Picture& band, const Output& rows) {
        const Output between = {OutputFormat::Bgra, block.data(), band.width, band.height, stride};
        return run(first, band, between) &&
               second(block.data(), stride, rows.data, rows.stride, rows.width, rows.height) == 0;
    });
}

} // namespace

bool rgbTo(const Picture& p, const Output& to, PixelPool& pool) {
    if (p.width == to.width && p.height == to.height)
        return atOwnSize(p, to, pool);
    const bool grey = to.format == OutputFormat::Grey;
    Source whole = {p.planes[0].data, p.width, p.height, p.planes[0].stride};
    PixelPool::Block block;
    if (grey || p.layout != Layout::Bgrx) {
        const int stride = p.width * (grey ? 1 : 4);
        block = pool.take(static_cast<size_t>(stride) * static_cast<size_t>(p.height));
        const Output native = {grey ? OutputFormat::Grey : OutputFormat::Bgra, block.data(), p.width,
                               p.height, stride};
        if (!atOwnSize(p, native, pool))
            return false;
        whole = {block.data(), p.width, p.height, stride};
    }
    if (grey)
        scalePlane(whole, {to.data, to.width, to.height, to.stride}, pool);
    else
        scaleBgra(whole, to, pool);
    return true;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
