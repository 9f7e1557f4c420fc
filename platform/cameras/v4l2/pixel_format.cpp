#include "platform/cameras/v4l2/pixel_format.h"

#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

using pixels::Layout;
using pixels::YuvMatrix;

namespace {

struct Entry {
    uint32_t fourcc;
    Layout layout;
};

const Entry kFormats[] = {
    {V4L2_PIX_FMT_YUYV, Layout::Yuyv},    {V4L2_PIX_FMT_UYVY, Layout::Uyvy},
    {V4L2_PIX_FMT_YVYU, Layout::Yvyu},    {V4L2_PIX_FMT_VYUY, Layout::Vyuy},
    {V4L2_PIX_FMT_NV12, Layout::Nv12},    {V4L2_PIX_FMT_NV21, Layout::Nv21},
    {V4L2_PIX_FMT_YUV420, Layout::I420},  {V4L2_PIX_FMT_YVU420, Layout::Yv12},
    {V4L2_PIX_FMT_YUV422P, Layout::I422}, {V4L2_PIX_FMT_RGB24, Layout::Rgb},
    {V4L2_PIX_FMT_BGR24, Layout::Bgr},    {V4L2_PIX_FMT_BGR32, Layout::Bgrx},
    {V4L2_PIX_FMT_XBGR32, Layout::Bgrx},  {V4L2_PIX_FMT_ABGR32, Layout::Bgrx},
    {V4L2_PIX_FMT_RGB32, Layout::Xrgb},   {V4L2_PIX_FMT_XRGB32, Layout::Xrgb},
    {V4L2_PIX_FMT_ARGB32, Layout::Xrgb},  {V4L2_PIX_FMT_RGBX32, Layout::Rgbx},
    {V4L2_PIX_FMT_RGBA32, Layout::Rgbx},  {V4L2_PIX_FMT_RGB565, Layout::Rgb565},
    {V4L2_PIX_FMT_GREY, Layout::Grey},    {V4L2_PIX_FMT_MJPEG, Layout::Jpeg},
    {V4L2_PIX_FMT_JPEG, Layout::Jpeg},
};

} // namespace

bool layoutOf(uint32_t fourcc, Layout& layout) {
    for (const Entry& entry : kFormats) {
        if (entry.fourcc == fourcc) {
            layout = entry.layout;
            return true;
        }
    }
    return false;
}

std::string fourccText(uint32_t fourcc) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const char c = static_cast<char>(fourcc >> shift & 0x7F);
        text += c >= ' ' && c <= '~' ? c : '?';
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return text;
}

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
