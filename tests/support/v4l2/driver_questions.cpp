// What the scripted driver says that it can do, and what it grants.
#include "support/v4l2/driver.h"

#include <algorithm>
#include <cstring>

namespace ostrel::support {

using cameras::Interval;
using cameras::Size;
using cameras::SizeRange;

namespace {

uint32_t bytesPerPixelOfFirstPlane(uint32_t fourcc) {
    switch (fourcc) {
    case V4L2_PIX_FMT_YUYV:
    case V4L2_PIX_FMT_YVYU:
    case V4L2_PIX_FMT_UYVY:
    case V4L2_PIX_FMT_VYUY:
    case V4L2_PIX_FMT_RGB565:
    case V4L2_PIX_FMT_RGB565X:
    case V4L2_PIX_FMT_Y10:
    case V4L2_PIX_FMT_Y12:
    case V4L2_PIX_FMT_Y16:
    case V4L2_PIX_FMT_Y16_BE:
    case v4l2_fourcc('P', '0', '1', '0'):
        return 2;
    case V4L2_PIX_FMT_RGB24:
    case V4L2_PIX_FMT_BGR24:
        return 3;
    case V4L2_PIX_FMT_XBGR32:
    case V4L2_PIX_FMT_BGR32:
        return 4;
    default:
        return 1;
    }
}

// The chroma beside a plane of luma.
struct Chroma {
    bool apart;           // in memory of its own
    uint32_t planes;      // 0: none
    uint32_t bytesFactor; // the size of each plane: the luma's by these two
    uint32_t bytesParts;
    uint32_t strideFactor; // the same of a row's
    uint32_t strideParts;

    uint32_t bytes(uint32_t luma) const { return luma * bytesFactor / bytesParts; }
    uint32_t stride(uint32_t luma) const { return luma * strideFactor / strideParts; }
};

Chroma chromaOf(uint32_t fourcc) {
    switch (fourcc) {
    case V4L2_PIX_FMT_NV12:
    case V4L2_PIX_FMT_NV21:
    case v4l2_fourcc('P', '0', '1', '0'):
        return {false, 1, 1, 2, 1, 1};
    case V4L2_PIX_FMT_NV16:
        return {false, 1, 1, 1, 1, 1};
    case V4L2_PIX_FMT_NV24:
        return {false, 1, 2, 1, 2, 1};
    case V4L2_PIX_FMT_YUV420:
    case V4L2_PIX_FMT_YVU420:
        return {false, 2, 1, 4, 1, 2};
    case V4L2_PIX_FMT_YUV422P:
        return {false, 2, 1, 2, 1, 2};
    case V4L2_PIX_FMT_NV12M:
    case V4L2_PIX_FMT_NV21M:
        return {true, 1, 1, 2, 1, 1};
    case V4L2_PIX_FMT_NV16M:
        return {true, 1, 1, 1, 1, 1};
    case V4L2_PIX_FMT_YUV420M:
    case V4L2_PIX_FMT_YVU420M:
        return {true, 2, 1, 4, 1, 2};
    case V4L2_PIX_FMT_YUV422M:
        return {true, 2, 1, 2, 1, 2};
    case V4L2_PIX_FMT_YUV444M:
        return {true, 2, 1, 1, 1, 1};
    default:
        return {false, 0, 1, 1, 1, 1};
    }
}

void layOut(v4l2_pix_format& pix, uint32_t padding) {
    if (pix.pixelformat == V4L2_PIX_FMT_MJPEG) {
        pix.bytesperline = 0;
        pix.sizeimage = pix.width * pix.height * 2 + 4096;
        return;
    }
    const Chroma chroma = chromaOf(pix.pixelformat);
    pix.bytesperline = pix.width * bytesPerPixelOfFirstPlane(pix.pixelformat) + padding;
    pix.sizeimage = pix.bytesperline * pix.height;
    if (!chroma.apart)
        pix.sizeimage += chroma.bytes(pix.sizeimage) * chroma.planes;
}

v4l2_fract fraction(const Interval& interval) {
    v4l2_fract f = {};
    f.numerator = interval.numerator;
    f.denominator = interval.denominator;
    return f;
}

template <size_t N>
void copyText(__u8 (&to)[N], const std::string& from) {
    std::memcpy(to, from.data(), std::min(from.size(), N));
}

bool isMultiplanar(uint32_t type) {
    return type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
}

v4l2_pix_format asked(const v4l2_format& format) {
    if (!isMultiplanar(format.type))
        return format.fmt.pix;
    v4l2_pix_format pix = {};
    pix.width = format.fmt.pix_mp.width;
    pix.height = format.fmt.pix_mp.height;
    pix.pixelformat = format.fmt.pix_mp.pixelformat;
    pix.field = format.fmt.pix_mp.field;
    return pix;
}

void tell(const PictureFormat& granted, v4l2_format& format) {
    const v4l2_pix_format& pix = granted.pix;
    if (!isMultiplanar(format.type)) {
        format.fmt.pix = pix;
        return;
    }
    v4l2_pix_format_mplane& mp = format.fmt.pix_mp;
    mp.width = pix.width;
    mp.height = pix.height;
    mp.pixelformat = pix.pixelformat;
    mp.field = pix.field;
    mp.colorspace = pix.colorspace;
    mp.num_planes = static_cast<uint8_t>(granted.planeBytes.size());
    for (size_t plane = 0; plane < granted.planeBytes.size(); ++plane) {
        mp.plane_fmt[plane].bytesperline = granted.planeStrides[plane];
        mp.plane_fmt[plane].sizeimage = granted.planeBytes[plane];
    }
}

} // namespace

int Driver::question(int descriptor, unsigned long request, void* argument) {
    switch (static_cast<uint32_t>(request)) {
    case VIDIOC_QUERYCAP:
        return describe(*static_cast<v4l2_capability*>(argument));
    case VIDIOC_ENUM_FMT:
        return describe(*static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
        return describe(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
        return describe(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_ENUMINPUT:
        return describe(*static_cast<v4l2_input*>(argument));
    case VIDIOC_G_INPUT:
        *static_cast<int*>(argument) = 0;
        return 0;
    case VIDIOC_S_INPUT:
        return *static_cast<int*>(argument) == 0 ? 0 : EINVAL;
    case VIDIOC_G_FMT:
        tell(format_, *static_cast<v4l2_format*>(argument));
        return static_cast<v4l2_format*>(argument)->type == format_.type ? 0 : EINVAL;
    case VIDIOC_TRY_FMT:
        return negotiate(*static_cast<v4l2_format*>(argument), false);
    case VIDIOC_S_FMT:
        return negotiate(*static_cast<v4l2_format*>(argument), true);
    case VIDIOC_G_PARM:
        return parameters(*static_cast<v4l2_streamparm*>(argument), false);
    case VIDIOC_S_PARM:
        return parameters(*static_cast<v4l2_streamparm*>(argument), true);
    case VIDIOC_SUBSCRIBE_EVENT:
    case VIDIOC_DQEVENT:
        return eventQuestion(handles_[descriptor], request, argument);
    default: {
        const int error = device_.controls.empty() ? ENOTTY : controlQuestion(request, argument);
        return error == ENOTTY ? sourceQuestion(request, argument) : error;
    }
    }
}

int Driver::describe(v4l2_capability& caps) const {
    caps = {};
    copyText(caps.card, device_.card);
    copyText(caps.driver, device_.driver);
    copyText(caps.bus_info, device_.busInfo);
    caps.version = 0x060000;
    caps.capabilities =
        device_.hasDeviceCaps ? device_.wholeDevice | V4L2_CAP_DEVICE_CAPS : device_.capabilities;
    caps.device_caps = device_.hasDeviceCaps ? device_.capabilities : 0;
    return 0;
}

bool Driver::captures(uint32_t type) const {
    return (type == V4L2_BUF_TYPE_VIDEO_CAPTURE && (device_.capabilities & V4L2_CAP_VIDEO_CAPTURE)) ||
           (isMultiplanar(type) && (device_.capabilities & V4L2_CAP_VIDEO_CAPTURE_MPLANE));
}

int Driver::describe(v4l2_fmtdesc& entry) const {
    if (!captures(entry.type) || entry.index >= device_.formats.size())
        return EINVAL;
    entry.pixelformat = device_.formats[entry.index].fourcc;
    entry.flags = entry.pixelformat == V4L2_PIX_FMT_MJPEG ? V4L2_FMT_FLAG_COMPRESSED : 0u;
    return 0;
}

const FormatScript* Driver::listed(uint32_t fourcc) const {
    const auto found = std::find_if(device_.formats.begin(), device_.formats.end(),
                                    [fourcc](const FormatScript& format) { return format.fourcc == fourcc; });
    return found == device_.formats.end() ? nullptr : &*found;
}

int Driver::describe(v4l2_frmsizeenum& entry) const {
    const FormatScript* format = listed(entry.pixel_format);
    if (!format || isReceiver() || entry.index >= format->sizes.size())
        return EINVAL;
    const SizeRange& range = format->sizes[entry.index];
    if (range.least == range.most) {
        entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        entry.discrete.width = static_cast<uint32_t>(range.most.width);
        entry.discrete.height = static_cast<uint32_t>(range.most.height);
        return 0;
    }
    entry.type = range.step.width == 1 ? V4L2_FRMSIZE_TYPE_CONTINUOUS : V4L2_FRMSIZE_TYPE_STEPWISE;
    entry.stepwise.min_width = static_cast<uint32_t>(range.least.width);
    entry.stepwise.min_height = static_cast<uint32_t>(range.least.height);
    entry.stepwise.max_width = static_cast<uint32_t>(range.most.width);
    entry.stepwise.max_height = static_cast<uint32_t>(range.most.height);
    entry.stepwise.step_width = static_cast<uint32_t>(range.step.width);
    entry.stepwise.step_height = static_cast<uint32_t>(range.step.height);
    return 0;
}

int Driver::describe(v4l2_frmivalenum& entry) const {
    const FormatScript* format = listed(entry.pixel_format);
    if (!format)
        return EINVAL;
    const Size size(static_cast<int>(entry.width), static_cast<int>(entry.height));
    const std::vector<Interval> intervals =
        format->intervalsOf ? format->intervalsOf(size) : format->intervals;
    if (entry.index >= intervals.size())
        return EINVAL;
    entry.type = format->intervalType;
    if (entry.type == V4L2_FRMIVAL_TYPE_DISCRETE) {
        entry.discrete = fraction(intervals[entry.index]);
        return 0;
    }
    if (entry.index > 0 || intervals.size() < 3)
        return EINVAL;
    entry.stepwise.min = fraction(intervals[0]);
    entry.stepwise.max = fraction(intervals[1]);
    entry.stepwise.step = fraction(intervals[2]);
    return 0;
}

int Driver::describe(v4l2_input& entry) const {
    if (entry.index > 0)
        return EINVAL;
    entry = {};
    copyText(entry.name, isReceiver() ? "HDMI 1" : "Camera 1");
    entry.type = V4L2_INPUT_TYPE_CAMERA;
    if (isReceiver()) {
        entry.capabilities = V4L2_IN_CAP_DV_TIMINGS;
        entry.status = incoming_.width == 0 ? V4L2_IN_ST_NO_SIGNAL : 0u;
    }
    return 0;
}

PictureFormat Driver::granted(uint32_t type, const v4l2_pix_format& asked) const {
    PictureFormat result;
    result.type = type;
    v4l2_pix_format& pix = result.pix = asked;
    if (!listed(pix.pixelformat))
        pix.pixelformat = device_.formats.front().fourcc;
    if (isReceiver()) {
        pix.width = static_cast<uint32_t>(timings_.width);
        pix.height = static_cast<uint32_t>(timings_.height);
    }
    pix.field = V4L2_FIELD_NONE;
    pix.colorspace = V4L2_COLORSPACE_SRGB;
    layOut(pix, device_.padding);
    if (device_.adjust)
        device_.adjust(pix);
    const Chroma chroma = chromaOf(pix.pixelformat);
    result.planeBytes.push_back(pix.sizeimage);
    result.planeStrides.push_back(pix.bytesperline);
    for (uint32_t plane = 0; chroma.apart && plane < chroma.planes; ++plane) {
        result.planeBytes.push_back(chroma.bytes(pix.sizeimage));
        result.planeStrides.push_back(chroma.stride(pix.bytesperline));
    }
    if (isMultiplanar(type))
        for (uint32_t& bytes : result.planeBytes)
            bytes += device_.dataOffset;
    return result;
}

int Driver::negotiate(v4l2_format& format, bool keep) {
    if (device_.formats.empty() || !captures(format.type))
        return EINVAL;
    if (keep && owner_ >= 0)
        return EBUSY;
    const PictureFormat result = granted(format.type, asked(format));
    tell(result, format);
    if (keep)
        format_ = result;
    return 0;
}

int Driver::parameters(v4l2_streamparm& parameters, bool set) {
    if (!device_.knowsRates)
        return ENOTTY;
    if (!captures(parameters.type))
        return EINVAL;
    if (set) {
        interval_.numerator = parameters.parm.capture.timeperframe.numerator;
        interval_.denominator = parameters.parm.capture.timeperframe.denominator;
        if (device_.grantInterval)
            interval_ = device_.grantInterval(interval_);
    }
    parameters.parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
    parameters.parm.capture.timeperframe = fraction(interval_);
    return 0;
}

} // namespace ostrel::support
