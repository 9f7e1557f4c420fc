// Converting and scaling.
#include "bindings/c/pixels.h"
#include "bindings/c/call.h"

#include <ostrel/processing.h>

#include <vector>

namespace ostrel {
namespace c {

size_t pictureBytes(int32_t layout, int width, int height) {
    const auto columns = static_cast<size_t>(width), rows = static_cast<size_t>(height);
    switch (layout) {
    case OSTREL_BGRA:
        return columns * rows * 4;
    case OSTREL_BGR:
        return columns * rows * 3;
    case OSTREL_GREY:
        return columns * rows;
    case OSTREL_I420:
        return columns * rows + (columns + 1) / 2 * ((rows + 1) / 2) * 2;
    case OSTREL_YUY2:
        return columns * rows * 2;
    default:
        throw Failure(OSTREL_BAD_ARGUMENT, "There is no layout " + std::to_string(layout));
    }
}

void spreadRow(const uint8_t* from, int32_t layout, uint8_t* bgra, int width) {
    const ptrdiff_t step = layout == OSTREL_BGR ? 3 : 1;
    const ptrdiff_t green = layout == OSTREL_BGR ? 1 : 0, red = 2 * green;
    for (int x = 0; x < width; ++x, from += step, bgra += 4) {
        bgra[0] = from[0];
        bgra[1] = from[green];
        bgra[2] = from[red];
        bgra[3] = 255;
    }
}

namespace {

struct Picture {
    const uint8_t* pixels;
    size_t bytes;
    int32_t layout;
    int width, height;
};

std::vector<uint8_t> copyOf(const Picture& picture) {
    return std::vector<uint8_t>(picture.pixels, picture.pixels + picture.bytes);
}

// OVideoConverter's way to I420 reads bitmaps, of which the bottom row comes first.
std::vector<uint8_t> bottomRowFirst(const Picture& bgr) {
    const size_t row = static_cast<size_t>(bgr.width) * 3;
    std::vector<uint8_t> turned(bgr.bytes);
    for (size_t from = bgr.bytes, to = 0; from >= row; from -= row, to += row)
        std::memcpy(turned.data() + to, bgr.pixels + from - row, row);
    return turned;
}

int convertBgr(const Picture& from, int32_t to, uint8_t* converted) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(from.width) * 3;
    switch (to) {
    case OSTREL_BGRA:
        for (int y = 0; y < from.height; ++y)
            spreadRow(from.pixels + y * row, OSTREL_BGR,
                      converted + static_cast<ptrdiff_t>(y) * from.width * 4, from.width);
        return 0;
    case OSTREL_I420:
        return OVideoConverter::RGB24ToI420(bottomRowFirst(from).data(), converted, from.width, from.height);
    case OSTREL_YUY2: {
        std::vector<uint8_t> yuy2;
        if (OVideoConverter::RGB24ToYUY2(copyOf(from), yuy2, from.width, from.height) != 0)
            return -1;
        std::memcpy(converted, yuy2.data(), yuy2.size());
        return 0;
    }
    default:
        return -1;
    }
}

// 0, or -1 for a pair that is not converted.
int convert(const Picture& from, int32_t to, uint8_t* converted) {
    const int width = from.width, height = from.height;
    if (from.layout == OSTREL_BGR)
        return convertBgr(from, to, converted);
    if (from.layout == OSTREL_BGRA && to == OSTREL_I420)
        return OVideoConverter::ARGBToI420(from.pixels, converted, width, height);
    if (from.layout == OSTREL_I420 && to == OSTREL_BGRA)
        return OVideoConverter::I420ToARGB32(from.pixels, converted, width, height);
    if (from.layout == OSTREL_I420 && to == OSTREL_YUY2)
        return OVideoConverter::I420ToYUY2(from.pixels, converted, width, height, 0);
    if (from.layout == OSTREL_YUY2 && to == OSTREL_BGRA)
        return OVideoConverter::YUY2ToARGB(from.pixels, converted, width, height);
    if (from.layout == OSTREL_YUY2 && to == OSTREL_I420)
        return OVideoConverter::YUY2ToI420(width, height, from.pixels, converted);
    return -1;
}

void checkMemory(const void* memory, size_t bytes, size_t needed, int code, const char* what) {
    if (!memory)
        throw Failure(OSTREL_BAD_ARGUMENT, std::string(what) + " is a null pointer");
    if (bytes < needed)
        throw Failure(code, std::string(what) + " has " + std::to_string(bytes) + " bytes and needs " +
                                std::to_string(needed));
}

void checkEven(int32_t width, int32_t height) {
    if (width < 2 || height < 2 || width > LARGEST_SIDE || height > LARGEST_SIDE || width % 2 || height % 2)
        throw Failure(OSTREL_BAD_ARGUMENT,
                      "Width and height are even, from 2 to " + std::to_string(LARGEST_SIDE) + " pixels");
}

VIDEO_QUALITY qualityOf(int32_t width, int32_t height) {
    const int level = OVideoCommon::resolutionToQuality(width, height);
    if (level < 0)
        throw Failure(OSTREL_BAD_ARGUMENT, "Sizes are 320 x 240, 640 x 480 and 1280 x 720");
    return static_cast<VIDEO_QUALITY>(level);
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_convert(int32_t from, const uint8_t* pixels, size_t bytes, int32_t to,
                              uint8_t* converted, size_t converted_bytes, int32_t width, int32_t height,
                              char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        checkEven(width, height);
        const size_t needed = pictureBytes(from, width, height);
        checkMemory(pixels, bytes, needed, OSTREL_BAD_ARGUMENT, "The picture");
        checkMemory(converted, converted_bytes, pictureBytes(to, width, height), OSTREL_TOO_SMALL,
                    "The converted picture's memory");
        if (convert({pixels, needed, from, width, height}, to, converted) != 0)
            throw Failure(OSTREL_BAD_ARGUMENT, "These two layouts are not converted into each other");
        return OSTREL_OK;
    });
}

extern "C" int ostrel_scale(int32_t layout, const uint8_t* pixels, size_t bytes, int32_t width,
                            int32_t height, uint8_t* scaled, size_t scaled_bytes, int32_t scaled_width,
                            int32_t scaled_height, int32_t filter, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        if (filter < OSTREL_NEAREST || filter > OSTREL_BOX ||
            (layout != OSTREL_I420 && layout != OSTREL_YUY2))
            throw Failure(OSTREL_BAD_ARGUMENT, "I420 and YUY2 are scaled, by one of the three filters");
        const VIDEO_QUALITY from = qualityOf(width, height), to = qualityOf(scaled_width, scaled_height);
        const size_t needed = pictureBytes(layout, width, height);
        checkMemory(pixels, bytes, needed, OSTREL_BAD_ARGUMENT, "The picture");
        checkMemory(scaled, scaled_bytes, pictureBytes(layout, scaled_width, scaled_height), OSTREL_TOO_SMALL,
                    "The scaled picture's memory");
        std::vector<uint8_t> source = copyOf({pixels, needed, layout, width, height}), target;
        const auto scale =
            layout == OSTREL_I420 ? &OVideoScaler::scaleI420Frame : &OVideoScaler::scaleYUY2Frame;
        if (scale(from, source, to, target, static_cast<ScaleMethod>(filter)) != 0)
            throw Failure(OSTREL_FAILED, "The picture was not scaled");
        std::memcpy(scaled, target.data(), target.size());
        return OSTREL_OK;
    });
}
