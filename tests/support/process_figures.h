// What this process uses of the system.
#ifndef OSTREL_TESTS_PROCESS_FIGURES_H
#define OSTREL_TESTS_PROCESS_FIGURES_H

#include <cstddef>

namespace ostrel::support {

struct ProcessFigures {
    size_t threads = 0;
    size_t descriptors = 0;
    size_t mappings = 0;       // of memory, all of them
    size_t sharedMappings = 0; // those shared with other processes
    size_t heapBytes = 0;      // in use, as malloc counts them
    size_t residentBytes = 0;  // of the whole process
};

ProcessFigures processFigures();

// Waits until there are no more threads than that: one that was joined may be in the kernel's list for a
// moment.
bool threadsComeDownTo(size_t most);

} // namespace ostrel::support

#endif
