// How many frames a second arrive, and how old the newest is.
#ifndef OSTREL_APPS_VIEWER_FRAME_METER_H
#define OSTREL_APPS_VIEWER_FRAME_METER_H

#include <chrono>
#include <cstdint>

namespace ostrel::apps::viewer {

using Clock = std::chrono::steady_clock;

// Fed with every frame that is taken. Re-entrant; the caller names the time, so that it can be tested.
class FrameMeter {
public:
    void reset() { *this = FrameMeter(); }
    void frameArrived(uint32_t frameNumber, Clock::time_point now);

    // Frames a second that the camera delivers, those that were never taken among them; 0 when it has
    // stopped.
    double rate(Clock::time_point now);
    // Since the newest frame was first seen; zero before the first one.
    Clock::duration age(Clock::time_point now) const;

private:
    struct Mark {
        uint32_t number = 0;
        Clock::time_point time;
    };

    bool started_ = false;
    Mark newest_;
    Mark windowStart_; // the newest frame when the rate was last worked out
    double rate_ = 0;
};

} // namespace ostrel::apps::viewer

#endif
