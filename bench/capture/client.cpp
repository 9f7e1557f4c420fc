#include "bench/capture/client.h"

#include "bench/capture/measure.h"
#include "bench/capture/timed_kernel.h"

#include <ostrel/devices.h>

namespace bench {

Client::Client(const std::string& identifier, int width, int height)
    : capture_(ostrel::OVideoCaptureUnix::ptr()) {
    capture_->startCapture(identifier.c_str(), width, height);
}

bool Client::waitForFrame(uint32_t number) {
    const int64_t until = monotonicNow() + 10000000000;
    const auto there = [&] { return !frame_.data.empty() && frame_.frameNumber >= number; };
    while (!there() && monotonicNow() < until) {
        sleepUntil(monotonicNow() + 200000);
        poll();
    }
    return there();
}

const ostrel::VideoFrame& Client::poll() {
    capture_->selfVideoFrame(frame_);
    return frame_;
}

int bytesOf(ostrel::OVideoPixels format) {
    return format == ostrel::OVIDEO_PIXELS_BGRA ? 4 : format == ostrel::OVIDEO_PIXELS_BGR ? 3 : 1;
}

WaitingClient::WaitingClient(const std::string& identifier, int width, int height,
                             ostrel::OVideoPixels format, uint8_t* pixels)
    : stride_(width * bytesOf(format)), bytes_(static_cast<size_t>(stride_) * static_cast<size_t>(height)),
      format_(format), pixels_(pixels), capture_(ostrel::quietVideoCapture()) {
    capture_->startCapture(identifier.c_str(), width, height);
    reader_ = std::make_unique<ostrel::OVideoFrameReader>(capture_);
}

bool WaitingClient::next() {
    return ostrel::nextVideoFrame(*reader_, pixels_, bytes_, stride_, format_, 10000, &facts_) == 1;
}

std::string identifierOf(int number) {
    const QList<QString> identifiers = ostrel::videoDevices().keys();
    return number < identifiers.size() ? identifiers[number].toStdString() : std::string();
}

} // namespace bench
