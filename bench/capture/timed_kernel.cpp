#include "bench/capture/timed_kernel.h"

#include "bench/capture/pictures.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace bench {

int TimedKernel::doIoctl(int descriptor, unsigned long request, void* argument) {
    // By its number: this file is also part of a library that stands in for ioctl().
    ::syscall(SYS_ioctl, descriptor, 0, nullptr);
    return ScriptedKernel::doIoctl(descriptor, request, argument);
}

ostrel::support::DeviceScript timedCamera(const CameraModel& model) {
    ostrel::support::DeviceScript device;
    device.driver = "timed";
    device.card = "Timed camera";
    device.busInfo = "platform:timed";
    device.formats = {
        ostrel::support::raw(model.fourcc, {ostrel::support::only(model.width, model.height)}, model.rate)};
    device.period = model.period();
    device.timestamps = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    const auto picture =
        std::make_shared<std::vector<uint8_t>>(makePicture(model.fourcc, model.width, model.height));
    device.picture = picture;
    device.stamp = [model](uint8_t* bytes, uint32_t sequence) {
        stamp(bytes, model.fourcc, model.width, sequence);
    };
    device.adjust = [model, picture](v4l2_pix_format& pix) {
        pix.width = static_cast<uint32_t>(model.width);
        pix.height = static_cast<uint32_t>(model.height);
        pix.bytesperline = bytesPerLine(model.fourcc, model.width);
        pix.sizeimage = static_cast<uint32_t>(picture->size());
        pix.colorspace =
            model.fourcc == V4L2_PIX_FMT_MJPEG ? V4L2_COLORSPACE_JPEG : V4L2_COLORSPACE_SMPTE170M;
    };
    return device;
}

} // namespace bench
