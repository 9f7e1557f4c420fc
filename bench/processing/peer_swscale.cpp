#include "bench/processing/workload.h"

#include <memory>

extern "C" {
#include <libswscale/swscale.h>
}

namespace bench {

namespace {

AVPixelFormat formatOf(Layout layout) {
    switch (layout) {
    case Layout::BGRA:
        return AV_PIX_FMT_BGRA;
    case Layout::RGB24:
        return AV_PIX_FMT_BGR24; // bytes B, G, R
    case Layout::YUY2:
        return AV_PIX_FMT_YUYV422;
    case Layout::I420:
        break;
    }
    return AV_PIX_FMT_YUV420P;
}

int flagsOf(Filter filter) {
    switch (filter) {
    case Filter::None:
        return SWS_POINT;
    case Filter::Bilinear:
        return SWS_FAST_BILINEAR;
    case Filter::Box:
        break;
    }
    return SWS_AREA;
}

struct Planes {
    uint8_t* data[4] = {};
    int stride[4] = {};
};

Planes planesOf(Picture& picture) {
    Planes planes;
    const int count = picture.layout == Layout::I420 ? 3 : 1;
    for (int i = 0; i < count; ++i) {
        planes.data[i] = picture.plane(i);
        planes.stride[i] = picture.stride(i);
    }
    return planes;
}

} // namespace

Work swscale(Picture& from, Picture& to, Filter filter, bool bottomUp) {
    std::shared_ptr<SwsContext> context(sws_getContext(from.width, from.height, formatOf(from.layout),
                                                       to.width, to.height, formatOf(to.layout),
                                                       flagsOf(filter), nullptr, nullptr, nullptr),
                                        sws_freeContext);
    if (!context)
        return nullptr;
    Planes source = planesOf(from);
    const Planes target = planesOf(to);
    if (bottomUp) {
        source.data[0] += source.stride[0] * (from.height - 1);
        source.stride[0] = -source.stride[0];
    }
    const int rows = from.height;
    return [=] { sws_scale(context.get(), source.data, source.stride, 0, rows, target.data, target.stride); };
}

} // namespace bench
