#include "bench/processing/workload.h"

#include <ostrel/processing.h>

#include <libyuv.h>

namespace bench {

using ostrel::OVideoCommon;
using ostrel::OVideoScaler;
using ostrel::ScaleMethod;
using ostrel::VIDEO_QUALITY;

namespace {

struct Method {
    const char* name;
    ScaleMethod method;
    libyuv::FilterMode plain;
    Filter filter;
};

const Method METHODS[] = {
    {"none", ostrel::SCALE_METHOD_NONE, libyuv::kFilterNone, Filter::None},
    {"bilinear", ostrel::SCALE_METHOD_BILINEAR, libyuv::kFilterBilinear, Filter::Bilinear},
    {"box", ostrel::SCALE_METHOD_BOX, libyuv::kFilterBox, Filter::Box}};

Picture makeLevel(Layout layout, int quality) {
    int width = 0, height = 0;
    OVideoCommon::qualityToResolution(quality, width, height);
    return makePicture(layout, width, height);
}

void plainI420(Picture& from, Picture& to, libyuv::FilterMode filter) {
    libyuv::I420Scale(from.plane(0), from.stride(0), from.plane(1), from.stride(1), from.plane(2),
                      from.stride(2), from.width, from.height, to.plane(0), to.stride(0), to.plane(1),
                      to.stride(1), to.plane(2), to.stride(2), to.width, to.height, filter);
}

void plainYuy2(Picture& from, Picture& unpacked, Picture& scaled, Picture& to, libyuv::FilterMode filter) {
    libyuv::YUY2ToI420(from.data(), from.stride(0), unpacked.plane(0), unpacked.stride(0), unpacked.plane(1),
                       unpacked.stride(1), unpacked.plane(2), unpacked.stride(2), from.width, from.height);
    plainI420(unpacked, scaled, filter);
    libyuv::I420ToYUY2(scaled.plane(0), scaled.stride(0), scaled.plane(1), scaled.stride(1), scaled.plane(2),
                       scaled.stride(2), to.data(), to.stride(0), to.width, to.height);
}

void addScale(Layout layout, int fromLevel, int toLevel, const Method& method) {
    // Live as long as the program, and are the same for all contenders.
    Picture& from = *new Picture(makeLevel(layout, fromLevel));
    Picture& to = *new Picture(makeLevel(layout, toLevel));
    const std::string size = std::to_string(from.width) + "x" + std::to_string(from.height) + "-" +
                             std::to_string(to.width) + "x" + std::to_string(to.height);
    const auto source = static_cast<VIDEO_QUALITY>(fromLevel);
    const auto target = static_cast<VIDEO_QUALITY>(toLevel);
    std::string operation;
    if (layout == Layout::I420) {
        operation = std::string("scaleI420-") + method.name;
        add(operation, size, "library", [=, &from, &to, &method] {
            OVideoScaler::scaleI420Frame(source, from.bytes, target, to.bytes, method.method);
        });
        add(operation, size, "libyuv", [&] { plainI420(from, to, method.plain); });
    } else {
        operation = std::string("scaleYUY2-") + method.name;
        Picture& unpacked = *new Picture(makeLevel(Layout::I420, fromLevel));
        Picture& scaled = *new Picture(makeLevel(Layout::I420, toLevel));
        add(operation, size, "library", [=, &from, &to, &method] {
            OVideoScaler::scaleYUY2Frame(source, from.bytes, target, to.bytes, method.method);
        });
        add(operation, size, "libyuv", [&] { plainYuy2(from, unpacked, scaled, to, method.plain); });
    }
    add(operation, size, "swscale", swscale(from, to, method.filter));
    add(operation, size, "OpenCV", openCvScale(from, to, method.filter));
    add(operation, size, "memcpy", memcpyOfTheSameTraffic(from, to));
}

} // namespace

void addScales() {
    for (const Layout layout : {Layout::I420, Layout::YUY2})
        for (const Method& method : METHODS)
            for (int fromLevel = 0; fromLevel < 3; ++fromLevel)
                for (int toLevel = 0; toLevel < 3; ++toLevel)
                    addScale(layout, fromLevel, toLevel, method);
}

} // namespace bench
