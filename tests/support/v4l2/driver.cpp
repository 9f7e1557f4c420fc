// The scripted driver's descriptors, and what a test does to the device.
#include "support/v4l2/driver.h"

#include <algorithm>
#include <ctime>
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace ostrel::support {

namespace {

const int64_t SECOND = 1000000000;
const int64_t NEVER = 0, PAST = 1;

} // namespace

int64_t monotonicNow() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * SECOND + now.tv_nsec;
}

Driver::Driver(const DeviceScript& device, Journal& journal)
    : device_(device), journal_(journal), incoming_(device.incoming), timings_(device.incoming) {
    for (const ControlScript& script : device.controls)
        controls_.push_back({script, script.standard, std::string()});
    if (device.formats.empty())
        return;
    const FormatScript& first = device.formats.front();
    v4l2_pix_format pix = {};
    pix.pixelformat = first.fourcc;
    pix.width = first.sizes.empty() ? 640 : static_cast<uint32_t>(first.sizes.front().least.width);
    pix.height = first.sizes.empty() ? 480 : static_cast<uint32_t>(first.sizes.front().least.height);
    format_ = granted(device.capabilities & V4L2_CAP_VIDEO_CAPTURE ? V4L2_BUF_TYPE_VIDEO_CAPTURE
                                                                   : V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE,
                      pix);
    if (!first.intervals.empty())
        interval_ = first.intervals.front();
}

Driver::~Driver() {
    release();
}

int Driver::open() {
    const int descriptor = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    handles_[descriptor];
    rearm();
    return descriptor;
}

void Driver::close(int descriptor) {
    if (owner_ == descriptor) {
        if (!excused_)
            journal_.misuse.push_back("closed with buffers");
        switchStream(false);
        release();
    }
    handles_.erase(descriptor);
    ::close(descriptor);
}

int Driver::ioctl(int descriptor, unsigned long request, void* argument) {
    if (gone_) {
        if (request == VIDIOC_REQBUFS || request == VIDIOC_STREAMOFF)
            owner_ = -1;
        return request == VIDIOC_DQBUF ? device_.unpluggedDequeue : ENODEV;
    }
    const int error = command(descriptor, request, argument);
    return error == ENOTTY ? question(descriptor, request, argument) : error;
}

short Driver::events(int descriptor, short asked) {
    if (gone_)
        return POLLERR | POLLHUP;
    advance();
    rearm();
    const int ready = (done_.empty() ? 0 : POLLIN) | (handles_[descriptor].told.empty() ? 0 : POLLPRI);
    return static_cast<short>(events_ | (ready & asked) | (streaming_ ? 0 : POLLERR));
}

void Driver::unplug() {
    gone_ = true;
    streaming_ = false;
    rearm();
}

void Driver::setEvents(short events) {
    events_ = events;
    rearm();
}

unsigned Driver::queued() const {
    return static_cast<unsigned>(
        std::count_if(buffers_.begin(), buffers_.end(), [](const Buffer& b) { return b.queued; }));
}

int64_t Driver::arrival(uint32_t number) const {
    return started_ ? started_ + (static_cast<int64_t>(number) + 1) * device_.period : 0;
}

void Driver::arm(int descriptor, Handle& handle, int64_t at) const {
    if (handle.armed == at)
        return;
    handle.armed = at;
    itimerspec when = {};
    when.it_value.tv_sec = at / SECOND;
    when.it_value.tv_nsec = at % SECOND;
    ::timerfd_settime(descriptor, TFD_TIMER_ABSTIME, &when, nullptr);
}

// Lets poll() return now, with the next frame that comes by itself, or not at all.
void Driver::rearm() {
    int64_t at = NEVER;
    if (gone_ || events_ || !done_.empty())
        at = PAST;
    else if (streaming_ && device_.period && !stalled_)
        at = arrival(sequence_);
    // Who waits for changes of controls does not wait for frames.
    for (auto& handle : handles_) {
        const bool forFrames = handle.second.wantsControls.empty();
        const int64_t others = gone_ ? PAST : NEVER;
        arm(handle.first, handle.second, !handle.second.told.empty() ? PAST : forFrames ? at : others);
    }
}

} // namespace ostrel::support
