// When the frames of a steady rate are due: an absolute schedule, so that neither late wake-ups nor rounding
// add up.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_FRAME_SCHEDULE_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_FRAME_SCHEDULE_H

#include <cmath>
#include <cstdint>

namespace ostrel {
namespace cameras {

// Times are CLOCK_MONOTONIC in nanoseconds; frame 0 is due at the start. Re-entrant.
class FrameSchedule {
public:
    FrameSchedule(int64_t start, double framesPerSecond)
        : start_(start), nanosecondsPerFrame_(1e9L / static_cast<long double>(framesPerSecond)) {}

    int64_t due(uint64_t frame) const {
        return start_ +
               static_cast<int64_t>(std::ceil(static_cast<long double>(frame) * nanosecondsPerFrame_));
    }

    // The newest frame that is due at the time, at least `next`: those between are passed over.
    uint64_t newest(int64_t time, uint64_t next) const {
        uint64_t frame = 0;
        if (time > start_)
            frame = static_cast<uint64_t>(static_cast<long double>(time - start_) / nanosecondsPerFrame_);
        // due() rounds, so the division may be off by one either way.
        while (frame > 0 && due(frame) > time)
            --frame;
        while (due(frame + 1) <= time)
            ++frame;
        return frame > next ? frame : next;
    }

private:
    int64_t start_;
    long double nanosecondsPerFrame_;
};

} // namespace cameras
} // namespace ostrel

#endif
