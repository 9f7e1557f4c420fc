#include "base/frame_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <limits>
#include <new>
#include <string>
#include <unistd.h>
#include <utility>

using ostrel::FrameMemory;

namespace {

const size_t kLargePage = 2 * 1024 * 1024;

uintptr_t addressOf(const FrameMemory& memory) {
    return reinterpret_cast<uintptr_t>(memory.data());
}

// Whether the kernel was asked for large pages at this address.
bool largePagesWanted(uintptr_t address) {
    std::ifstream maps("/proc/self/smaps");
    bool here = false;
    for (std::string line; std::getline(maps, line);) {
        unsigned long begin = 0, end = 0;
        if (std::sscanf(line.c_str(), "%lx-%lx ", &begin, &end) == 2)
            here = begin <= address && address < end;
        else if (here && line.compare(0, 8, "VmFlags:") == 0)
            return line.find(" hg") != std::string::npos;
    }
    return false;
}

} // namespace

TEST(FrameMemory, HasRoomForAllItsBytesAtAnyAlignmentThatVectorsNeed) {
    for (size_t bytes : {size_t(0), size_t(1), size_t(63), size_t(64), size_t(320 * 240 * 4), kLargePage - 1,
                         kLargePage, size_t(1280 * 720 * 4)}) {
        const FrameMemory memory(bytes);
        ASSERT_NE(memory.data(), nullptr);
        EXPECT_EQ(addressOf(memory) % 64, 0u) << bytes;
        std::fill_n(memory.data(), bytes, static_cast<unsigned char>(7)); // the sanitizers watch
    }
}

TEST(FrameMemory, OfASmallFrameLeavesThePagesAlone) {
    const FrameMemory memory(320 * 240 * 4);
    EXPECT_FALSE(largePagesWanted(addressOf(memory)));
}

TEST(FrameMemory, OfALargeFrameLiesInLargePagesWhereTheKernelHasThem) {
    const FrameMemory memory(1280 * 720 * 4);
    EXPECT_EQ(addressOf(memory) % kLargePage, 0u);
    if (::access("/sys/kernel/mm/transparent_hugepage", F_OK) != 0)
        GTEST_SKIP() << "this kernel has no large pages for all";
    EXPECT_TRUE(largePagesWanted(addressOf(memory)));
    EXPECT_TRUE(largePagesWanted(addressOf(memory) + 1280 * 720 * 4 - 1));
}

TEST(FrameMemory, ThatThereIsNotThrows) {
    for (size_t bytes : {std::numeric_limits<size_t>::max(), std::numeric_limits<size_t>::max() - kLargePage,
                         std::numeric_limits<size_t>::max() / 2})
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
