#include "bench/processing/workload.h"

#include <ostrel/processing.h>

#include <libyuv.h>

namespace bench {

using ostrel::OVideoCommon;
using ostrel::OVideoConverter;

namespace {

struct Conversion {
    const char* name;
    Layout from;
    Layout to;
    bool bottomUp;
    void (*library)(Picture& from, Picture& to);
    void (*plain)(Picture& from, Picture& to);
};

template <int (*Convert)(const uint8_t*, uint8_t*, int, int)>
void byPointer(Picture& from, Picture& to) {
    Convert(from.data(), to.data(), from.width, from.height);
}

void toI420(int (*convert)(const uint8_t*, int, uint8_t*, int, uint8_t*, int, uint8_t*, int, int, int),
            Picture& from, Picture& to, int height) {
    convert(from.data(), from.stride(0), to.plane(0), to.stride(0), to.plane(1), to.stride(1), to.plane(2),
            to.stride(2), from.width, height);
}

void fromI420(int (*convert)(const uint8_t*, int, const uint8_t*, int, const uint8_t*, int, uint8_t*, int,
                             int, int),
              Picture& from, Picture& to) {
    convert(from.plane(0), from.stride(0), from.plane(1), from.stride(1), from.plane(2), from.stride(2),
            to.data(), to.stride(0), from.width, from.height);
}

// As a client without the library would: the intermediate frame is kept between calls.
void plainRgb24ToYuy2(Picture& from, Picture& to) {
    static std::vector<Picture> kept;
    if (kept.empty() || kept.front().width != from.width)
        kept.assign(1, makePicture(Layout::I420, from.width, from.height));
    toI420(libyuv::RGB24ToI420, from, kept.front(), from.height);
    fromI420(libyuv::I420ToYUY2, kept.front(), to);
}

const Conversion CONVERSIONS[] = {
    {"RGB24ToI420", Layout::RGB24, Layout::I420, true, byPointer<OVideoConverter::RGB24ToI420>,
     [](Picture& from, Picture& to) { toI420(libyuv::RGB24ToI420, from, to, -from.height); }},
    {"ARGBToI420", Layout::BGRA, Layout::I420, false, byPointer<OVideoConverter::ARGBToI420>,
     [](Picture& from, Picture& to) { toI420(libyuv::ARGBToI420, from, to, from.height); }},
    {"I420ToARGB32", Layout::I420, Layout::BGRA, false, byPointer<OVideoConverter::I420ToARGB32>,
     [](Picture& from, Picture& to) { fromI420(libyuv::I420ToARGB, from, to); }},
    {"YUY2ToARGB", Layout::YUY2, Layout::BGRA, false, byPointer<OVideoConverter::YUY2ToARGB>,
     [](Picture& from, Picture& to) {
         libyuv::YUY2ToARGB(from.data(), from.stride(0), to.data(), to.stride(0), from.width, from.height);
     }},
    {"I420ToYUY2", Layout::I420, Layout::YUY2, false,
     [](Picture& from, Picture& to) {
         OVideoConverter::I420ToYUY2(from.data(), to.data(), from.width, from.height, 0);
     },
     [](Picture& from, Picture& to) { fromI420(libyuv::I420ToYUY2, from, to); }},
    {"YUY2ToI420", Layout::YUY2, Layout::I420, false,
     [](Picture& from, Picture& to) {
         OVideoConverter::YUY2ToI420(from.width, from.height, from.data(), to.data());
     },
     [](Picture& from, Picture& to) { toI420(libyuv::YUY2ToI420, from, to, from.height); }},
    {"RGB24ToARGB32", Layout::RGB24, Layout::BGRA, true,
     [](Picture& from, Picture& to) {
         OVideoConverter::RGB24ToARGB32(from.bytes, to.bytes, from.width, from.height);
     },
     [](Picture& from, Picture& to) {
         libyuv::RGB24ToARGB(from.data(), from.stride(0), to.data(), to.stride(0), from.width, -from.height);
     }},
    {"RGB24ToYUY2", Layout::RGB24, Layout::YUY2, false,
     [](Picture& from, Picture& to) {
         OVideoConverter::RGB24ToYUY2(from.bytes, to.bytes, from.width, from.height);
     },
     plainRgb24ToYuy2},
};

} // namespace

// All contenders of one operation work on the same two pictures: where memory happens to lie makes more
// difference than some of what is measured.
void addConversions() {
    for (const Conversion& conversion : CONVERSIONS)
        for (int quality = 0; quality < 3; ++quality) {
            int width = 0, height = 0;
            OVideoCommon::qualityToResolution(quality, width, height);
            const std::string size = std::to_string(width) + "x" + std::to_string(height);
            Picture& from =
                *new Picture(makePicture(conversion.from, width, height)); // live as long as the program
            Picture& to = *new Picture(makePicture(conversion.to, width, height));
            add(conversion.name, size, "library", [&] { conversion.library(from, to); });
            add(conversion.name, size, "libyuv", [&] { conversion.plain(from, to); });
            add(conversion.name, size, "swscale", swscale(from, to, Filter::Bilinear, conversion.bottomUp));
            add(conversion.name, size, "OpenCV", openCvConversion(from, to, conversion.bottomUp));
            add(conversion.name, size, "memcpy", memcpyOfTheSameTraffic(from, to));
        }
}

} // namespace bench
