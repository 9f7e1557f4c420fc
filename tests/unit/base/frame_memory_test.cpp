#include "base/frame_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <new>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>
#include <vector>

using ostrel::FrameMemory;

namespace {

const size_t LARGE_PAGE = 2 * 1024 * 1024;
const size_t PICTURE = 1280 * 720 * 4;

uintptr_t addressOf(const FrameMemory& memory) {
    return reinterpret_cast<uintptr_t>(memory.data());
}

// The mappings for which the kernel was asked for large pages.
struct Range {
    unsigned long begin, end;
};
std::vector<Range> wantedInLargePages() {
    std::ifstream maps("/proc/self/smaps");
    std::vector<Range> found;
    Range here = {0, 0};
    for (std::string line; std::getline(maps, line);) {
        Range next = {0, 0};
        if (std::sscanf(line.c_str(), "%lx-%lx ", &next.begin, &next.end) == 2)
            here = next;
        else if (line.compare(0, 8, "VmFlags:") == 0 && line.find(" hg") != std::string::npos)
            found.push_back(here);
    }
    return found;
}

bool largePagesWanted(uintptr_t address) {
    for (const Range& range : wantedInLargePages())
        if (range.begin <= address && address < range.end)
            return true;
    return false;
}

// Tried, since an emulator of the processor may keep the advice to itself.
bool systemTakesTheAdvice() {
    void* const block = ::mmap(nullptr, LARGE_PAGE, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    if (block == MAP_FAILED)
        return false;
    ::madvise(block, LARGE_PAGE, MADV_HUGEPAGE);
    const bool taken = largePagesWanted(reinterpret_cast<uintptr_t>(block));
    ::munmap(block, LARGE_PAGE);
    return taken;
}

bool isMapped(uintptr_t address) {
    unsigned char resident = 0;
    const auto page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
    return ::mincore(reinterpret_cast<void*>(address / page * page), 1, &resident) == 0;
}

} // namespace

TEST(FrameMemory, HasRoomForAllItsBytesAtAnyAlignmentThatVectorsNeed) {
    for (size_t bytes :
         {size_t(0), size_t(1), size_t(63), size_t(64), size_t(320 * 240 * 4), FrameMemory::LARGE - 1,
          FrameMemory::LARGE + 0, LARGE_PAGE, LARGE_PAGE + 1, PICTURE}) {
        const FrameMemory memory(bytes);
        ASSERT_NE(memory.data(), nullptr);
        EXPECT_EQ(addressOf(memory) % 64, 0u) << bytes;
        std::fill_n(memory.data(), bytes, static_cast<unsigned char>(7)); // the sanitizers watch
    }
}

TEST(FrameMemory, OfASmallFrameLeavesThePagesAlone) {
    const FrameMemory memory(FrameMemory::LARGE - 1);
    EXPECT_FALSE(largePagesWanted(addressOf(memory)));
}

TEST(FrameMemory, OfALargeFrameLiesInLargePagesWhereTheSystemHasThem) {
    const bool expected = systemTakesTheAdvice();
    for (size_t bytes : {FrameMemory::LARGE + 0, PICTURE}) {
        const FrameMemory memory(bytes);
        EXPECT_EQ(addressOf(memory) % LARGE_PAGE, 0u);
        EXPECT_EQ(largePagesWanted(addressOf(memory)), expected) << bytes;
        EXPECT_EQ(largePagesWanted(addressOf(memory) + bytes - 1), expected) << bytes;
    }
}

TEST(FrameMemory, OfALargeFrameGoesBackToTheSystem) {
    for (size_t bytes : {FrameMemory::LARGE + 0, PICTURE}) {
        FrameMemory memory(bytes);
        std::fill_n(memory.data(), bytes, static_cast<unsigned char>(7));
        const uintptr_t begin = addressOf(memory);
        ASSERT_TRUE(isMapped(begin));
        memory.reset();
        EXPECT_FALSE(isMapped(begin));
        EXPECT_FALSE(isMapped(begin + bytes - 1));
    }
}

TEST(FrameMemory, ReplacedGoesBackAtOnce) {
    FrameMemory memory(PICTURE);
    const uintptr_t first = addressOf(memory);
    memory = FrameMemory(FrameMemory::LARGE - 1);
    EXPECT_FALSE(isMapped(first));
    memory = FrameMemory(PICTURE);
    std::fill_n(memory.data(), PICTURE, static_cast<unsigned char>(7));
}

TEST(FrameMemory, LeavesNoAdviceOnMemoryOfOthers) {
    const size_t before = wantedInLargePages().size(); // an emulator's own
    for (size_t bytes = 1000; bytes < 20 * LARGE_PAGE; bytes = bytes * 3 / 2) {
        const FrameMemory first(bytes);
        const FrameMemory second(bytes);
    }
    EXPECT_EQ(wantedInLargePages().size(), before);
}

TEST(FrameMemory, ThatThereIsNotThrows) {
    for (size_t bytes :
         {std::numeric_limits<size_t>::max(), std::numeric_limits<size_t>::max() - LARGE_PAGE,
          std::numeric_limits<size_t>::max() - LARGE_PAGE / 2, std::numeric_limits<size_t>::max() / 2})
        EXPECT_THROW(FrameMemory memory(bytes), std::bad_alloc) << bytes;
}

TEST(FrameMemory, CanBeMovedAndGivenUp) {
    FrameMemory first(100);
    unsigned char* const data = first.data();
    FrameMemory second(std::move(first));
    EXPECT_EQ(second.data(), data);
    EXPECT_EQ(first.data(), nullptr); // NOLINT: that is the question
    second.reset();
    EXPECT_EQ(second.data(), nullptr);
    EXPECT_EQ(FrameMemory().data(), nullptr);
}
