#include "platform/cameras/pixels/grey.h"

#include <algorithm>
#include <libyuv.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// Row by row through plain loops, which the compiler turns into vector instructions: as long as their length
// is a number of their own, which no written byte can change.
template <typename Row>
void eachRow(const Source& from, const Target& to, Row row) {
    for (int y = 0; y < to.height; ++y)
        row(from.data + static_cast<ptrdiff_t>(y) * from.stride,
            to.data + static_cast<ptrdiff_t>(y) * to.stride, to.width);
}

// Samples of more than eight bits, by their high ones. What a driver leaves above them is taken for white.
template <int Bits>
void narrow(const Source& from, const Target& to) {
    eachRow(from, to, [](const uint8_t* in, uint8_t* out, int width) {
        for (int x = 0; x < width; ++x) {
            const auto sample = static_cast<uint16_t>(in[2 * x] | in[2 * x + 1] << 8);
            out[x] = static_cast<uint8_t>(std::min(sample >> (Bits - 8), 255));
        }
    });
}

// `Byte`: which of the two of a sample.
template <int Byte>
void takeBytes(const Source& from, const Target& to) {
    eachRow(from, to, [](const uint8_t* in, uint8_t* out, int width) {
        for (int x = 0; x < width; ++x)
            out[x] = in[2 * x + Byte];
    });
}

// At its own size.
void toFullRange(const Picture& p, const Target& to) {
    const Source from = {p.planes[0].data, p.width, p.height, p.planes[0].stride};
    switch (p.layout) {
    case Layout::Grey10:
        return narrow<10>(from, to);
    case Layout::Grey12:
        return narrow<12>(from, to);
    case Layout::Grey16:
        return takeBytes<1>(from, to);
    case Layout::Grey16Be:
        return takeBytes<0>(from, to);
    default:
        return expandRange(from, to);
    }
}

bool spread(const Source& grey, const Output& to) {
    const uint8_t* const g = grey.data;
    if (to.format == OutputFormat::Bgra)
        return libyuv::J400ToARGB(g, grey.stride, to.data, to.stride, to.width, to.height) == 0;
    libyuv::MergeRGBPlane(g, grey.stride, g, grey.stride, g, grey.stride, to.data, to.stride, to.width,
                          to.height);
    return true;
}

bool fullRangeTo(const Source& grey, const Output& to, PixelPool& pool) {
    if (to.format == OutputFormat::Grey) {
        scalePlane(grey, {to.data, to.width, to.height, to.stride}, pool);
        return true;
    }
    if (grey.width == to.width && grey.height == to.height)
        return spread(grey, to);
    const PixelPool::Block block = pool.take(static_cast<size_t>(to.width) * static_cast<size_t>(to.height));
    const Target scaled = {block.data(), to.width, to.height, to.width};
    scalePlane(grey, scaled, pool);
    return spread({scaled.data, scaled.width, scaled.height, scaled.stride}, to);
}

} // namespace

bool isGrey(Layout layout) {
    switch (layout) {
    case Layout::Luma:
    case Layout::Grey:
    case Layout::Grey10:
    case Layout::Grey12:
    case Layout::Grey16:
    case Layout::Grey16Be:
        return true;
    default:
        return false;
    }
}

bool greyTo(const Picture& p, const Output& to, PixelPool& pool) {
    if (p.layout == Layout::Grey || (p.layout == Layout::Luma && isFullRange(p.matrix)))
        return fullRangeTo({p.planes[0].data, p.width, p.height, p.planes[0].stride}, to, pool);
    if (to.format == OutputFormat::Grey && p.width == to.width && p.height == to.height) {
        toFullRange(p, {to.data, to.width, to.height, to.stride});
        return true;
    }
    const PixelPool::Block block = pool.take(static_cast<size_t>(p.width) * static_cast<size_t>(p.height));
    toFullRange(p, {block.data(), p.width, p.height, p.width});
    return fullRangeTo({block.data(), p.width, p.height, p.width}, to, pool);
}

void expandRange(const Source& from, const Target& to) {
    eachRow(from, to, [](const uint8_t* in, uint8_t* out, int width) {
        for (int x = 0; x < width; ++x) {
            // y * 255 / 219, by factors that keep everything in 16 bits.
            const auto y = static_cast<uint16_t>((std::clamp<uint8_t>(in[x], 16, 235) - 16) << 8);
            const auto part = static_cast<uint16_t>(static_cast<uint32_t>(y) * 38155 >> 16);
            out[x] = static_cast<uint8_t>((part + 64) >> 7);
        }
    });
}

void takeHighBytes(const Source& from, const Target& to) {
    takeBytes<1>(from, to);
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
