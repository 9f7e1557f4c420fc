// Every allocation of the process, counted: malloc() and its kin, and mmap(), are replaced.
#ifndef OSTREL_BENCH_CAPTURE_ALLOCATIONS_H
#define OSTREL_BENCH_CAPTURE_ALLOCATIONS_H

#include <cstdint>

namespace bench {

uint64_t allocationCount();
uint64_t largeAllocationCount(); // of 64 KiB or more

} // namespace bench

#endif
