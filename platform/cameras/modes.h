// What a camera offers to be captured in, and what somebody wishes of it. Knows nothing of the kernel.
#ifndef OSTREL_PLATFORM_CAMERAS_MODES_H
#define OSTREL_PLATFORM_CAMERAS_MODES_H

#include "platform/cameras/format_choice.h"

#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// Intervals from shortest to longest, with any between; a single one has shortest == longest.
struct IntervalRange {
    Interval shortest, longest;
};

// A format in a size and an interval, or in any of a range. What the hardware does not tell is 0.
struct NativeMode {
    std::string format;     // four characters, "MJPG"
    bool hasPicture = true; // else its frames can only be shown as they are
    SizeRange sizes;
    IntervalRange intervals;
};
using NativeModes = std::vector<NativeMode>;

// What is empty or 0 may be anything, each by itself.
struct ModeWish {
    std::string format;
    Size size;
    Interval interval;
    bool any() const { return format.empty() && size == Size() && !interval.known(); }
};

// Whether the range has a size of the wished sides.
bool offers(const SizeRange& range, const Size& wished);
// The interval to ask for: where one is wished for, the nearest to it, the wish itself where none is offered;
// else the best. False when none that is offered is within a percent of the wish.
bool chooseInterval(const std::vector<IntervalRange>& offered, const Interval& wished, Interval& chosen);
// Whether the mode has a size and an interval that fit.
bool offers(const NativeMode& mode, const ModeWish& wish);

// The fraction that is nearest to a rate of frames a second; unknown for rates of 0 or less.
Interval intervalOf(double framesPerSecond);

} // namespace cameras
} // namespace ostrel

#endif
