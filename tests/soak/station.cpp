#include "soak/station.h"

#include <ostrel/processing.h>

#include <iostream>

namespace soak {

namespace {
// Far beyond any pause that a busy machine causes.
constexpr int64_t TIMEOUT = 20000; // milliseconds
} // namespace

Station::Station(int index, double framesPerSecond)
    : identifier_("soak-" + std::to_string(index)),
      camera_(QString::fromStdString(identifier_), QString::fromLatin1("Soak camera %1").arg(index), 640, 480,
              framesPerSecond) {
    camera_.attach();
}

void Station::start(int quality) {
    int width = 0, height = 0;
    ostrel::OVideoCommon::qualityToResolution(quality, width, height);
    capture_ = ostrel::OVideoCaptureUnix::ptr();
    capture_->startCapture(identifier_.c_str(), width, height);
    lastNumber_ = 0;
    lastNews_ = -1;
}

void Station::stop() {
    capture_.clear();
}

void Station::poll(int64_t now, Totals& totals) {
    if (lastNews_ < 0)
        lastNews_ = now;
    ++totals.polls;
    frame_.formatId = 0;
    capture_->selfVideoFrame(frame_);
    if (frame_.formatId == 4 && frame_.frameNumber != lastNumber_) {
        ++totals.frames;
        lastNews_ = now;
        check(totals);
    } else if (now - lastNews_ > TIMEOUT) {
        ++totals.silent;
        lastNews_ = now;
        std::cout << identifier_ << ": no new frame for " << TIMEOUT << " ms" << std::endl;
    }
}

// The frame number is read after the bytes, so it may be ahead of the counter in them, but neither goes back.
// The camera counts on from capture to capture.
void Station::check(Totals& totals) {
    uint32_t counter = 0, clock = 0;
    if (!ostrel::OVideoTestPatternCamera::decode(frame_.data.data(), frame_.width, frame_.height,
                                                 frame_.width * 4, counter, clock)) {
        ++totals.torn;
        std::cout << identifier_ << ": frame " << frame_.frameNumber << " cannot be read" << std::endl;
        return;
    }
    const bool back = static_cast<int32_t>(frame_.frameNumber - lastNumber_) < 0 ||
                      (lastNumber_ != 0 && static_cast<int32_t>(counter - lastCounter_) < 0);
    if (back) {
        ++totals.backwards;
        std::cout << identifier_ << ": frame number " << lastNumber_ << " -> " << frame_.frameNumber
                  << ", counter " << lastCounter_ << " -> " << counter << std::endl;
    }
    lastNumber_ = frame_.frameNumber;
    lastCounter_ = counter;
}

} // namespace soak
