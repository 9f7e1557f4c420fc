#include "platform/cameras/virtual/yuv_picture.h"

#include "platform/cameras/virtual/pixel_pool.h"
#include "platform/cameras/virtual/scaling.h"

#include <libyuv.h>

namespace ostrel {
namespace cameras {

namespace {

bool convert(const YuvLayout& layout, const uint8_t* planes, uint8_t* bgra, int stride) {
    const libyuv::YuvConstants* const colours =
        layout.fullRange ? &libyuv::kYuvJPEGConstants : &libyuv::kYuvI601Constants;
    const int w = layout.width, h = layout.height, half = layout.chromaWidth();
    const uint8_t* const u = planes + layout.lumaBytes();
    const uint8_t* const v = u + layout.chromaBytes();
    switch (layout.chroma) {
    case Chroma::Halved:
        return libyuv::I420ToARGBMatrix(planes, w, u, half, v, half, bgra, stride, colours, w, h) == 0;
    case Chroma::HalvedColumns:
        return libyuv::I422ToARGBMatrix(planes, w, u, half, v, half, bgra, stride, colours, w, h) == 0;
    case Chroma::Full:
        return libyuv::I444ToARGBMatrix(planes, w, u, half, v, half, bgra, stride, colours, w, h) == 0;
    case Chroma::None:
        return libyuv::I400ToARGBMatrix(planes, w, bgra, stride, colours, w, h) == 0;
    }
    return false;
}

} // namespace

bool drawYuv(const YuvLayout& layout, const uint8_t* planes, const std::shared_ptr<PixelPool>& pool,
             uint8_t* bgra, int width, int height, int stride) {
    if (width == layout.width && height == layout.height)
        return convert(layout, planes, bgra, stride);
    const int nativeStride = layout.width * 4;
    const PixelPool::Block native = PixelPool::take(pool, layout.lumaBytes() * 4);
    return native && convert(layout, planes, native.data(), nativeStride) &&
           scalePicture({native.data(), layout.width, layout.height, nativeStride},
                        {bgra, width, height, stride});
}

} // namespace cameras
} // namespace ostrel
