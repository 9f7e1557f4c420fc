// The clock that every waiting and every capture time goes by.
#ifndef OSTREL_BASE_MONOTONIC_CLOCK_H
#define OSTREL_BASE_MONOTONIC_CLOCK_H

#include <stdint.h>
#include <time.h>

namespace ostrel {

const int64_t NANOSECONDS_PER_SECOND = 1000000000;
const int64_t NANOSECONDS_PER_MILLISECOND = 1000000;

// CLOCK_MONOTONIC in nanoseconds. Re-entrant.
inline int64_t monotonicNanoseconds() {
    timespec now = {0, 0};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * NANOSECONDS_PER_SECOND + now.tv_nsec;
}

} // namespace ostrel

#endif
