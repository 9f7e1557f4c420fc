#include "unit/failure/failing_allocations.h"

#include "base/frame_memory.h"

using namespace ostrel;
using namespace ostrel::tests;

TEST(FrameMemoryWithoutMemory, TakesOneBlockWhichIsAllThereOrThrows) {
    for (size_t bytes : {size_t(1), FrameMemory::LARGE - 1, FrameMemory::LARGE + 0, 5 * FrameMemory::LARGE}) {
        EXPECT_EQ(failEachInTurn([&](int n) { return runFailingAt(n, [&] { FrameMemory memory(bytes); }); }),
                  1)
            << bytes;
    }
}

TEST(FrameMemoryWithoutMemory, KeepsTheOldBlockUntilTheNewOneIsThere) {
    for (size_t bytes : {size_t(1), FrameMemory::LARGE + 0}) {
        FrameMemory memory(bytes);
        unsigned char* const old = memory.data();
        EXPECT_TRUE(runFailingAt(1, [&] { memory = FrameMemory(bytes); }).thrown);
        ASSERT_EQ(memory.data(), old);
        memory.data()[bytes - 1] = 1;
    }
}
