// A machine with cameras that deliver frames in time by themselves, for the library's own V4L2 code. Waiting
// for a frame is real, and each call enters the kernel once, as that of a real camera does. A real camera's
// frames are written by the hardware; here the pictures stand in the buffers and only get a number.
#ifndef OSTREL_BENCH_CAPTURE_TIMED_KERNEL_H
#define OSTREL_BENCH_CAPTURE_TIMED_KERNEL_H

#include "support/v4l2/scripted_kernel.h"

#include <memory>
#include <string>

namespace bench {

using ostrel::support::monotonicNow;

struct CameraModel {
    uint32_t fourcc = V4L2_PIX_FMT_YUYV;
    int width = 1280;
    int height = 720;
    unsigned rate = 30; // frames a second

    int64_t period() const { return 1000000000 / rate; } // nanoseconds
};

class TimedKernel : public ostrel::support::ScriptedKernel {
public:
    // How often a stream was asked something.
    int streamCalls(const std::string& path) const {
        return calls(path, VIDIOC_QBUF) + calls(path, VIDIOC_DQBUF);
    }

protected:
    int doIoctl(int descriptor, unsigned long request, void* argument) override;
};

ostrel::support::DeviceScript timedCamera(const CameraModel& model);

// Makes `count` timed cameras the machine's only ones: /dev/video0 and on, with the facts of USB cameras.
std::shared_ptr<TimedKernel> plugIn(const CameraModel& model, int count = 1);

} // namespace bench

#endif
