// What a camera says about one of its frames.
#ifndef OSTREL_PLATFORM_CAMERAS_FRAME_FACTS_H
#define OSTREL_PLATFORM_CAMERAS_FRAME_FACTS_H

#include "platform/cameras/format_choice.h"

#include <cstdint>
#include <string>

namespace ostrel {
namespace cameras {

enum class TimeSource { StartOfExposure, EndOfFrame, Arrival };

struct FrameFacts {
    uint32_t sequence = 0; // as the driver counts
    int64_t time = 0;      // of CLOCK_MONOTONIC in nanoseconds
    TimeSource source = TimeSource::Arrival;
    std::string format; // four characters, "MJPG"
    Size size;          // native, pixels
};

} // namespace cameras
} // namespace ostrel

#endif
