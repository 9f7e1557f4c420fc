// What the numbers of frames tell of those that are missing.
#ifndef OSTREL_PLATFORM_CAMERAS_SEQUENCE_GAPS_H
#define OSTREL_PLATFORM_CAMERAS_SEQUENCE_GAPS_H

#include <cstdint>

namespace ostrel {
namespace cameras {

// Bound to one thread.
class SequenceGaps {
public:
    // How many frames are missing between the one before and this one. Numbers wrap, may start anywhere, and
    // some drivers leave them at zero or begin again.
    uint32_t before(uint32_t sequence) {
        const uint32_t gap = sequence - last_ - 1;
        const bool missing = known_ && gap < 0x80000000u;
        known_ = true;
        last_ = sequence;
        return missing ? gap : 0;
    }

private:
    bool known_ = false;
    uint32_t last_ = 0;
};

} // namespace cameras
} // namespace ostrel

#endif
