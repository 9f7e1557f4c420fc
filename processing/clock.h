// The arithmetic of the millisecond clock, apart from the clock that it reads.
#ifndef OSTREL_PROCESSING_CLOCK_H
#define OSTREL_PROCESSING_CLOCK_H

#include "base/wrapping.h"

#include <stdint.h>
#include <sys/time.h>

namespace ostrel {

// The milliseconds since 1970 of a time of day, modulo 2^32. Microseconds are cut off, not rounded.
inline uint32_t millisecondsOf(const timeval& time) {
    // By way of nanoseconds: at most 999,999,000 of them, which 32 bits hold.
    const int32_t nanoseconds = wrapping::mul(static_cast<int32_t>(time.tv_usec), 1000);
    const int64_t milliseconds = static_cast<int64_t>(nanoseconds) / 1000000;
    return static_cast<uint32_t>(static_cast<uint64_t>(milliseconds) +
                                 static_cast<uint64_t>(time.tv_sec) * 1000);
}

} // namespace ostrel

#endif
