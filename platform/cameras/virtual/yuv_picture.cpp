#include "platform/cameras/virtual/yuv_picture.h"

namespace ostrel {
namespace cameras {

bool drawYuv(const YuvLayout& layout, const uint8_t* planes, pixels::PixelPool& pool, uint8_t* bgra,
             int width, int height, int stride) {
    if (!pixels::sizeIsSane(layout.width, layout.height) || !pixels::sizeIsSane(width, height))
        return false;
    const uint8_t* const u = planes + layout.lumaBytes();
    const pixels::Planes<const uint8_t> picture = {
        layout.chroma, layout.width,        layout.height, planes, u, u + layout.chromaBytes(),
        layout.width,  layout.chromaWidth()};
    const auto matrix = layout.fullRange ? pixels::YuvMatrix::Bt601Full : pixels::YuvMatrix::Bt601;
    return pixels::yuvToBgra(picture, matrix, {bgra, width, height, stride}, pool);
}

} // namespace cameras
} // namespace ostrel
