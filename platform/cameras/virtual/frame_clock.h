// Waits for the frames of a steady rate.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_FRAME_CLOCK_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_FRAME_CLOCK_H

#include "base/monotonic_clock.h"
#include "platform/cameras/delivery_thread.h"
#include "platform/cameras/virtual/frame_schedule.h"

#include <algorithm>
#include <cstdint>

namespace ostrel {
namespace cameras {

// Frame 0 is due when it is constructed. Bound to one thread.
class FrameClock {
public:
    explicit FrameClock(double framesPerSecond)
        : schedule_(monotonicNanoseconds(), framesPerSecond), framesPerSecond_(framesPerSecond) {}

    // Waits for the next frame, for a second at most or until it is woken. False: none is due. Else `frame`
    // is the newest that is, and `passedOver` how many before it nobody waited for.
    bool wait(const StopSignal& stop, uint64_t& frame, uint64_t& passedOver) {
        const int64_t due = schedule_.due(next_);
        if (stop.sleepUntil(std::min(due, monotonicNanoseconds() + NANOSECONDS_PER_SECOND)))
            return false;
        const int64_t now = monotonicNanoseconds();
        if (now < due)
            return false;
        frame = schedule_.newest(now, next_);
        passedOver = frame - next_;
        next_ = frame + 1;
        return true;
    }

    int64_t fiveIntervals() const { return static_cast<int64_t>(std::min(5e9 / framesPerSecond_, 9e18)); }

private:
    FrameSchedule schedule_;
    double framesPerSecond_;
    uint64_t next_ = 0;
};

} // namespace cameras
} // namespace ostrel

#endif
