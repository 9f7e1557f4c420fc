#include "bench/capture/measure.h"

#include "bench/capture/allocations.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace bench {

Cost costsSoFar() {
    Cost cost;
    timespec processor = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &processor);
    cost.microseconds =
        static_cast<double>(processor.tv_sec) * 1e6 + static_cast<double>(processor.tv_nsec) / 1e3;
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    cost.pageFaults = static_cast<uint64_t>(usage.ru_minflt + usage.ru_majflt);
    cost.wakeUps = static_cast<uint64_t>(usage.ru_nvcsw);
    cost.allocations = allocationCount();
    cost.largeAllocations = largeAllocationCount();
    return cost;
}

Cost operator-(const Cost& later, const Cost& earlier) {
    Cost cost;
    cost.microseconds = later.microseconds - earlier.microseconds;
    cost.pageFaults = later.pageFaults - earlier.pageFaults;
    cost.allocations = later.allocations - earlier.allocations;
    cost.largeAllocations = later.largeAllocations - earlier.largeAllocations;
    cost.wakeUps = later.wakeUps - earlier.wakeUps;
    return cost;
}

uint64_t ownWakeUps() {
    rusage usage = {};
    ::getrusage(RUSAGE_THREAD, &usage);
    return static_cast<uint64_t>(usage.ru_nvcsw);
}

void sleepUntil(int64_t nanoseconds) {
    timespec when = {};
    when.tv_sec = static_cast<time_t>(nanoseconds / 1000000000);
    when.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &when, nullptr) == EINTR) {
    }
}

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

QuietErrors::QuietErrors() : kept_(::dup(STDERR_FILENO)) {
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDERR_FILENO);
    ::close(nowhere);
}

QuietErrors::~QuietErrors() {
    ::dup2(kept_, STDERR_FILENO);
    ::close(kept_);
}

} // namespace bench
