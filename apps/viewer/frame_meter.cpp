#include "apps/viewer/frame_meter.h"

namespace ostrel::apps::viewer {

namespace {

// Long enough for a steady number, short enough to follow a change.
const std::chrono::seconds WINDOW(1);
// A camera that is this late has stopped; slower ones are still measured.
const std::chrono::seconds STOPPED(3);

} // namespace

void FrameMeter::frameArrived(uint32_t frameNumber, Clock::time_point now) {
    newest_ = {frameNumber, now};
    if (!started_)
        windowStart_ = newest_;
    started_ = true;
}

// Frames are counted by their numbers, so that frames which were passed over count as well, and the
// time runs from frame to frame, so that the window's ends do not cut an interval.
double FrameMeter::rate(Clock::time_point now) {
    const uint32_t frames = newest_.number - windowStart_.number;
    const Clock::duration window = newest_.time - windowStart_.time;
    if (started_ && now - newest_.time >= STOPPED) {
        rate_ = 0;
        windowStart_ = newest_;
    } else if (frames > 0 && window >= WINDOW) {
        rate_ = frames / std::chrono::duration<double>(window).count();
        windowStart_ = newest_;
    }
    return rate_;
}

Clock::duration FrameMeter::age(Clock::time_point now) const {
    return started_ ? now - newest_.time : Clock::duration::zero();
}

} // namespace ostrel::apps::viewer
