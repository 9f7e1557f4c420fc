#include "bench/capture/client.h"

#include "bench/capture/measure.h"
#include "bench/capture/timed_kernel.h"

#include <ostrel/devices.h>

namespace bench {

Client::Client(const std::string& identifier, int width, int height)
    : capture_(ostrel::OVideoCaptureUnix::ptr()) {
    capture_->startCapture(identifier.c_str(), width, height);
}

bool Client::waitForFirstFrame() {
    const int64_t until = monotonicNow() + 10000000000;
    while (frame_.data.empty() && monotonicNow() < until) {
        sleepUntil(monotonicNow() + 200000);
        poll();
    }
    return !frame_.data.empty();
}

const ostrel::VideoFrame& Client::poll() {
    capture_->selfVideoFrame(frame_);
    return frame_;
}

std::string identifierOf(int number) {
    const QList<QString> identifiers = ostrel::videoDevices().keys();
    return number < identifiers.size() ? identifiers[number].toStdString() : std::string();
}

} // namespace bench
