#include "support/process_figures.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <string>
#include <unistd.h>

namespace ostrel {
namespace testing_support {

namespace {

size_t entriesOf(const char* directory) {
    const std::filesystem::directory_iterator begin(directory), end;
    return static_cast<size_t>(std::distance(begin, end));
}

size_t residentBytes() {
    std::ifstream statm("/proc/self/statm");
    size_t total = 0, resident = 0;
    statm >> total >> resident;
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace

ProcessFigures processFigures() {
    ProcessFigures figures;
    figures.threads = entriesOf("/proc/self/task");
    figures.descriptors = entriesOf("/proc/self/fd") - 1; // without the one that reads the directory
    const struct mallinfo2 heap = mallinfo2();
    figures.heapBytes = heap.uordblks + heap.hblkhd;
    figures.residentBytes = residentBytes();
    return figures;
}

} // namespace testing_support
} // namespace ostrel
