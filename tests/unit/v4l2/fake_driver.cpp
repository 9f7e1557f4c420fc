// What the fake kernel's driver answers to each ioctl: 0, or an errno.
#include "unit/v4l2/fake_kernel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ostrel {
namespace tests {

using cameras::v4l2::Interval;
using cameras::v4l2::SizeRange;

namespace {

uint32_t bytesPerPixelOfFirstPlane(uint32_t fourcc) {
    switch (fourcc) {
    case V4L2_PIX_FMT_YUYV:
    case V4L2_PIX_FMT_UYVY:
    case V4L2_PIX_FMT_RGB565:
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

bool isPlanar(uint32_t fourcc) {
    return fourcc == V4L2_PIX_FMT_NV12 || fourcc == V4L2_PIX_FMT_NV21 || fourcc == V4L2_PIX_FMT_YUV420 ||
           fourcc == V4L2_PIX_FMT_YVU420;
}

void layOut(v4l2_pix_format& pix, uint32_t padding) {
    if (pix.pixelformat == V4L2_PIX_FMT_MJPEG) {
        pix.bytesperline = 0;
        pix.sizeimage = pix.width * pix.height * 2 + 4096;
        return;
    }
    pix.bytesperline = pix.width * bytesPerPixelOfFirstPlane(pix.pixelformat) + padding;
    pix.sizeimage = pix.bytesperline * pix.height;
    if (isPlanar(pix.pixelformat))
        pix.sizeimage = pix.sizeimage * 3 / 2;
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

} // namespace

int FakeKernel::answer(Camera& camera, int descriptor, unsigned long request, void* argument) {
    switch (request) {
    case VIDIOC_QUERYCAP:
        return queryCapabilities(camera, *static_cast<v4l2_capability*>(argument));
    case VIDIOC_ENUM_FMT:
        return listFormats(camera, *static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
        return listSizes(camera, *static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
        return listIntervals(camera, *static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_S_FMT:
        if (camera.owner >= 0)
            return EBUSY;
        return setFormat(camera, *static_cast<v4l2_format*>(argument));
    case VIDIOC_G_PARM:
        return parameters(camera, *static_cast<v4l2_streamparm*>(argument), false);
    case VIDIOC_S_PARM:
        return parameters(camera, *static_cast<v4l2_streamparm*>(argument), true);
    case VIDIOC_REQBUFS:
        return requestBuffers(camera, descriptor, *static_cast<v4l2_requestbuffers*>(argument));
    case VIDIOC_QUERYBUF:
        return queryBuffer(camera, *static_cast<v4l2_buffer*>(argument));
    case VIDIOC_QBUF:
        return queue(camera, *static_cast<v4l2_buffer*>(argument));
    case VIDIOC_DQBUF:
        return dequeue(camera, *static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
        return switchStream(camera, true);
    case VIDIOC_STREAMOFF:
        return switchStream(camera, false);
    default:
        return ENOTTY;
    }
}

int FakeKernel::queryCapabilities(Camera& camera, v4l2_capability& caps) {
    caps = {};
    copyText(caps.card, camera.device.card);
    copyText(caps.driver, camera.device.driver);
    copyText(caps.bus_info, camera.device.busInfo);
    caps.capabilities = camera.device.hasDeviceCaps ? camera.device.wholeDevice | V4L2_CAP_DEVICE_CAPS
                                                    : camera.device.capabilities;
    caps.device_caps = camera.device.hasDeviceCaps ? camera.device.capabilities : 0;
    return 0;
}

int FakeKernel::listFormats(Camera& camera, v4l2_fmtdesc& entry) {
    const bool several = entry.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    const uint32_t needed = several ? V4L2_CAP_VIDEO_CAPTURE_MPLANE : V4L2_CAP_VIDEO_CAPTURE;
    if (!(camera.device.capabilities & needed) || entry.index >= camera.device.formats.size())
        return EINVAL;
    entry.pixelformat = camera.device.formats[entry.index].fourcc;
    return 0;
}

int FakeKernel::listSizes(Camera& camera, v4l2_frmsizeenum& entry) {
    for (const FakeFormat& format : camera.device.formats) {
        if (format.fourcc != entry.pixel_format)
            continue;
        if (entry.index >= format.sizes.size())
            return EINVAL;
        const SizeRange& range = format.sizes[entry.index];
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
    return EINVAL;
}

int FakeKernel::listIntervals(Camera& camera, v4l2_frmivalenum& entry) {
    for (const FakeFormat& format : camera.device.formats) {
        if (format.fourcc != entry.pixel_format)
            continue;
        if (entry.index >= format.intervals.size())
            return EINVAL;
        entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
        entry.discrete = fraction(format.intervals[entry.index]);
        return 0;
    }
    return EINVAL;
}

int FakeKernel::setFormat(Camera& camera, v4l2_format& format) {
    if (camera.device.formats.empty())
        return EINVAL;
    const bool several = format.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    v4l2_pix_format pix = {};
    if (several) {
        pix.width = format.fmt.pix_mp.width;
        pix.height = format.fmt.pix_mp.height;
        pix.pixelformat = format.fmt.pix_mp.pixelformat;
    } else {
        pix = format.fmt.pix;
    }
    pix.colorspace = V4L2_COLORSPACE_SRGB;
    layOut(pix, camera.device.padding);
    if (camera.device.adjust)
        camera.device.adjust(pix);
    pix.sizeimage += camera.device.dataOffset;
    camera.format.type = format.type;
    camera.format.fmt.pix = pix;
    if (several) {
        v4l2_pix_format_mplane& mp = format.fmt.pix_mp;
        mp.width = pix.width;
        mp.height = pix.height;
        mp.pixelformat = pix.pixelformat;
        mp.colorspace = pix.colorspace;
        mp.num_planes = static_cast<uint8_t>(camera.device.planes);
        mp.plane_fmt[0].bytesperline = pix.bytesperline;
        mp.plane_fmt[0].sizeimage = pix.sizeimage;
    } else {
        format.fmt.pix = pix;
    }
    return 0;
}

int FakeKernel::parameters(Camera& camera, v4l2_streamparm& parameters, bool set) {
    if (!camera.device.knowsRates)
        return ENOTTY;
    if (set) {
        camera.interval.numerator = parameters.parm.capture.timeperframe.numerator;
        camera.interval.denominator = parameters.parm.capture.timeperframe.denominator;
    }
    parameters.parm.capture.capability = V4L2_CAP_TIMEPERFRAME;
    parameters.parm.capture.timeperframe = fraction(camera.interval);
    return 0;
}

int FakeKernel::requestBuffers(Camera& camera, int descriptor, v4l2_requestbuffers& request) {
    if (camera.owner >= 0 && camera.owner != descriptor)
        return EBUSY;
    if (camera.streaming)
        return EBUSY;
    const bool mapped = std::any_of(camera.buffers.begin(), camera.buffers.end(),
                                    [](const Buffer& b) { return b.memory != nullptr; });
    if (mapped)
        misuse_.push_back("buffers freed while mapped");
    request.count = std::min(request.count, camera.device.mostBuffers);
    camera.buffers.assign(request.count, Buffer());
    camera.waiting.clear();
    camera.done.clear();
    camera.owner = request.count ? descriptor : -1;
    note("REQBUFS " + std::to_string(request.count));
    return 0;
}

int FakeKernel::queryBuffer(Camera& camera, v4l2_buffer& buffer) {
    if (buffer.index >= camera.buffers.size())
        return EINVAL;
    if (buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE) {
        buffer.m.planes[0].length = camera.format.fmt.pix.sizeimage;
        buffer.m.planes[0].m.mem_offset = buffer.index * 4096;
    } else {
        buffer.length = camera.format.fmt.pix.sizeimage;
        buffer.m.offset = buffer.index * 4096;
    }
    return 0;
}

int FakeKernel::queue(Camera& camera, v4l2_buffer& buffer) {
    if (buffer.index >= camera.buffers.size() || camera.buffers[buffer.index].queued) {
        misuse_.push_back("queued a buffer that is not the client's");
        return EINVAL;
    }
    camera.buffers[buffer.index].queued = true;
    camera.waiting.push_back(buffer.index);
    return 0;
}

int FakeKernel::dequeue(Camera& camera, v4l2_buffer& buffer) {
    if (!camera.streaming)
        return EINVAL;
    if (camera.done.empty())
        return EAGAIN;
    const unsigned index = camera.done.front();
    camera.done.pop_front();
    Buffer& full = camera.buffers[index];
    full.queued = false;
    buffer.index = full.frame.index >= 0 ? static_cast<uint32_t>(full.frame.index) : index;
    buffer.flags = full.frame.flags;
    buffer.sequence = static_cast<uint32_t>(full.frame.sequence);
    buffer.timestamp = full.frame.time;
    const auto used = static_cast<uint32_t>(full.frame.bytesUsed);
    if (buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE) {
        buffer.m.planes[0].bytesused = used + camera.device.dataOffset;
        buffer.m.planes[0].data_offset = camera.device.dataOffset;
    } else {
        buffer.bytesused = used;
    }
    settle(camera);
    return 0;
}

int FakeKernel::switchStream(Camera& camera, bool on) {
    note(on ? "STREAMON" : "STREAMOFF");
    camera.streaming = on;
    if (!on) {
        for (Buffer& buffer : camera.buffers)
            buffer.queued = false;
        camera.waiting.clear();
        camera.done.clear();
        settle(camera);
    }
    return 0;
}

} // namespace tests
} // namespace ostrel
