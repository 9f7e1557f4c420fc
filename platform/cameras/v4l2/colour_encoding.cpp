#include "platform/cameras/v4l2/colour_encoding.h"

#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

using pixels::YuvMatrix;

YuvMatrix matrixOf(uint32_t colorspace, uint32_t encoding, uint32_t quantization) {
    if (encoding == V4L2_YCBCR_ENC_DEFAULT)
        encoding = V4L2_MAP_YCBCR_ENC_DEFAULT(colorspace);
    if (quantization == V4L2_QUANTIZATION_DEFAULT)
        quantization = V4L2_MAP_QUANTIZATION_DEFAULT(false, colorspace, encoding);
    const bool full = quantization == V4L2_QUANTIZATION_FULL_RANGE;
    switch (encoding) {
    case V4L2_YCBCR_ENC_709:
    case V4L2_YCBCR_ENC_XV709:
        return full ? YuvMatrix::Bt709Full : YuvMatrix::Bt709;
    case V4L2_YCBCR_ENC_BT2020:
    case V4L2_YCBCR_ENC_BT2020_CONST_LUM:
        return full ? YuvMatrix::Bt2020Full : YuvMatrix::Bt2020;
    default:
        return full ? YuvMatrix::Bt601Full : YuvMatrix::Bt601;
    }
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
