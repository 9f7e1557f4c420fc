// The clock that every waiting and every capture time goes by.
#ifndef OSTREL_BASE_MONOTONIC_CLOCK_H
#define OSTREL_BASE_MONOTONIC_CLOCK_H

#include <stdint.h>
#include <time.h>

namespace ostrel {

const int64_t NANOSECONDS_PER_SECOND = 1000000000;
const int64_t NANOSECONDS_PER_MILLISECOND = 1000000;

// The clock of std::chrono::steady_clock, so that its times may be waited for. On macOS CLOCK_MONOTONIC is
// another one, which follows the time of day's corrections.
#if defined(__APPLE__)
const clockid_t STEADY_CLOCK = CLOCK_MONOTONIC_RAW;
#else
const clockid_t STEADY_CLOCK = CLOCK_MONOTONIC;
#endif

// In nanoseconds. Re-entrant.
inline int64_t monotonicNanoseconds() {
    timespec now = {0, 0};
    clock_gettime(STEADY_CLOCK, &now);
    return static_cast<int64_t>(now.tv_sec) * NANOSECONDS_PER_SECOND + now.tv_nsec;
}

} // namespace ostrel

#endif
