#include "platform/cameras/virtual/yuv_picture.h"

namespace ostrel {
namespace cameras {

namespace {

pixels::Layout layoutOf(Chroma chroma) {
    switch (chroma) {
    case Chroma::Halved:
        return pixels::Layout::I420;
    case Chroma::HalvedColumns:
        return pixels::Layout::I422;
    case Chroma::Full:
        return pixels::Layout::I444;
    case Chroma::None:
        break;
    }
    return pixels::Layout::Luma;
}

} // namespace

pixels::Picture yuvPicture(const YuvLayout& layout, const uint8_t* planes) {
    pixels::Picture picture;
    picture.layout = layoutOf(layout.chroma);
    picture.matrix = layout.fullRange ? pixels::YuvMatrix::Bt601Full : pixels::YuvMatrix::Bt601;
    picture.width = layout.width;
    picture.height = layout.height;
    const uint8_t* const u = planes + layout.lumaBytes();
    picture.planes = {{{planes, layout.lumaBytes(), layout.width},
                       {u, layout.chromaBytes(), layout.chromaWidth()},
                       {u + layout.chromaBytes(), layout.chromaBytes(), layout.chromaWidth()}}};
    return picture;
}

} // namespace cameras
} // namespace ostrel
