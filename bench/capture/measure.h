// What a stretch of a program costs.
#ifndef OSTREL_BENCH_CAPTURE_MEASURE_H
#define OSTREL_BENCH_CAPTURE_MEASURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Cost {
    double microseconds = 0; // of processor time, all threads, user and system
    uint64_t pageFaults = 0;
    uint64_t allocations = 0;
    uint64_t largeAllocations = 0; // of 64 KiB or more: of the size of pictures
    uint64_t wakeUps = 0;          // threads that went to sleep
};

// Of this process, so far.
Cost costsSoFar();
Cost operator-(const Cost& later, const Cost& earlier);

// How often the calling thread went to sleep, so far.
uint64_t ownWakeUps();

// Sleeps until that time of CLOCK_MONOTONIC.
void sleepUntil(int64_t nanoseconds);

double median(std::vector<double> values);

// Standard error goes nowhere while this lives: the library writes its diagnostic lines there.
class QuietErrors {
public:
    QuietErrors();
    ~QuietErrors();
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    int kept_;
};

} // namespace bench

#endif
