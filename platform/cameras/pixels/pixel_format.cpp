#include "platform/cameras/pixels/pixel_format.h"

#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// Kernel headers older than 6.0 lack it.
const uint32_t P010 = v4l2_fourcc('P', '0', '1', '0');

struct Entry {
    uint32_t fourcc;
    PixelFormat format;
};

const Entry FORMATS[] = {
    {V4L2_PIX_FMT_YUYV, {Layout::Yuyv, 1}},        {V4L2_PIX_FMT_UYVY, {Layout::Uyvy, 1}},
    {V4L2_PIX_FMT_YVYU, {Layout::Yvyu, 1}},        {V4L2_PIX_FMT_VYUY, {Layout::Vyuy, 1}},
    {V4L2_PIX_FMT_NV12, {Layout::Nv12, 1}},        {V4L2_PIX_FMT_NV12M, {Layout::Nv12, 2}},
    {V4L2_PIX_FMT_NV21, {Layout::Nv21, 1}},        {V4L2_PIX_FMT_NV21M, {Layout::Nv21, 2}},
    {V4L2_PIX_FMT_NV16, {Layout::Nv16, 1}},        {V4L2_PIX_FMT_NV16M, {Layout::Nv16, 2}},
    {V4L2_PIX_FMT_NV24, {Layout::Nv24, 1}},        {P010, {Layout::P010, 1}},
    {V4L2_PIX_FMT_YUV420, {Layout::I420, 1}},      {V4L2_PIX_FMT_YUV420M, {Layout::I420, 3}},
    {V4L2_PIX_FMT_YVU420, {Layout::Yv12, 1}},      {V4L2_PIX_FMT_YVU420M, {Layout::Yv12, 3}},
    {V4L2_PIX_FMT_YUV422P, {Layout::I422, 1}},     {V4L2_PIX_FMT_YUV422M, {Layout::I422, 3}},
    {V4L2_PIX_FMT_YUV444M, {Layout::I444, 3}},     {V4L2_PIX_FMT_RGB24, {Layout::Rgb, 1}},
    {V4L2_PIX_FMT_BGR24, {Layout::Bgr, 1}},        {V4L2_PIX_FMT_BGR32, {Layout::Bgrx, 1}},
    {V4L2_PIX_FMT_XBGR32, {Layout::Bgrx, 1}},      {V4L2_PIX_FMT_ABGR32, {Layout::Bgrx, 1}},
    {V4L2_PIX_FMT_RGB32, {Layout::Xrgb, 1}},       {V4L2_PIX_FMT_XRGB32, {Layout::Xrgb, 1}},
    {V4L2_PIX_FMT_ARGB32, {Layout::Xrgb, 1}},      {V4L2_PIX_FMT_RGBX32, {Layout::Rgbx, 1}},
    {V4L2_PIX_FMT_RGBA32, {Layout::Rgbx, 1}},      {V4L2_PIX_FMT_RGB565, {Layout::Rgb565, 1}},
    {V4L2_PIX_FMT_RGB565X, {Layout::Rgb565Be, 1}}, {V4L2_PIX_FMT_GREY, {Layout::Grey, 1}},
    {V4L2_PIX_FMT_Y10, {Layout::Grey10, 1}},       {V4L2_PIX_FMT_Y12, {Layout::Grey12, 1}},
    {V4L2_PIX_FMT_Y16, {Layout::Grey16, 1}},       {V4L2_PIX_FMT_Y16_BE, {Layout::Grey16Be, 1}},
    {V4L2_PIX_FMT_MJPEG, {Layout::Jpeg, 1}},       {V4L2_PIX_FMT_JPEG, {Layout::Jpeg, 1}},
};

} // namespace

bool formatOf(uint32_t fourcc, PixelFormat& format) {
    for (const Entry& entry : FORMATS) {
        if (entry.fourcc == fourcc) {
            format = entry.format;
            return true;
        }
    }
    return false;
}

bool isConvertible(uint32_t fourcc, bool multiplanar) {
    PixelFormat format;
    return formatOf(fourcc, format) && (multiplanar || format.memoryPlanes == 1);
}

std::string fourccText(uint32_t fourcc) {
    std::string text;
    for (int shift = 0; shift < 32; shift += 8) {
        const char c = static_cast<char>(fourcc >> shift & 0x7F);
        text += c >= ' ' && c <= '~' ? c : '?';
    }
    while (!text.empty() && text.back() == ' ')
        text.pop_back();
    return fourcc & 1u << 31 ? text + "-BE" : text;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
