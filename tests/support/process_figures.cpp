#include "support/process_figures.h"

#include "support/gate.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <malloc.h>
#include <string>
#include <unistd.h>

namespace ostrel::support {

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

void countMappings(ProcessFigures& figures) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        ++figures.mappings;
        figures.sharedMappings += line.compare(line.find(' ') + 4, 1, "s") == 0; // "7f..-7f.. rw-s ..."
    }
}

} // namespace

ProcessFigures processFigures() {
    ProcessFigures figures;
    figures.threads = entriesOf("/proc/self/task");
    figures.descriptors = entriesOf("/proc/self/fd") - 1; // without the one that reads the directory
    countMappings(figures);
    const struct mallinfo2 heap = mallinfo2();
    figures.heapBytes = heap.uordblks + heap.hblkhd;
    figures.residentBytes = residentBytes();
    return figures;
}

bool threadsComeDownTo(size_t most) {
    return comesTrue([most] { return entriesOf("/proc/self/task") <= most; });
}

} // namespace ostrel::support
