// What a process has more of after many captures.
#include "driver_test.h"

#include <cstdio>
#include <dirent.h>
#include <malloc.h>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#else
#define SANITIZED 0
#endif

using namespace ostrel;

namespace {

int entriesOf(const char* directory) {
    DIR* const opened = ::opendir(directory);
    if (!opened)
        return -1;
    int count = 0;
    while (::readdir(opened))
        ++count;
    ::closedir(opened);
    return count - 2; // the directory itself and the one above
}

// An emulator of the processor has one of its own.
const int THREADS_OF_A_PROCESS = entriesOf("/proc/self/task");

int descriptors() {
    return entriesOf("/proc/self/fd");
}

// Threads that have ended may be listed for another moment.
int threadsOnceSettled(int expected) {
    int count = 0;
    support::comesTrue([&] { return (count = entriesOf("/proc/self/task")) <= expected; });
    return count;
}

class Growth : public support::DriverTest {
protected:
    Growth() : camera(attach("camera")) {}

    void cycle(int width, int height) {
        const auto driver = started("camera", width, height);
        camera->deliver(1);
        ASSERT_EQ(support::numberIn(poll(*driver)), 1);
        driver->stopVideoCapture();
        ASSERT_FALSE(camera->isOpen());
    }

    const std::shared_ptr<support::ScriptedCamera> camera;
};

} // namespace

TEST_F(Growth, TwoHundredCapturesLeaveNoDescriptorNoThreadAndLittleMemory) {
    constexpr int CYCLES = 200;
    for (int i = 0; i < 20; ++i)
        cycle(64, 48);
    const int threadsBefore = threadsOnceSettled(THREADS_OF_A_PROCESS + (SANITIZED ? 1 : 0));
    const int descriptorsBefore = descriptors();
    const std::size_t memoryBefore = ::mallinfo2().uordblks;
    for (int i = 0; i < CYCLES; ++i)
        cycle(64, 48);
    EXPECT_LE(threadsOnceSettled(threadsBefore), threadsBefore);
    EXPECT_EQ(descriptors(), descriptorsBefore);
    if (SANITIZED) {
        std::puts("memory is not measured: the sanitizer has an allocator of its own");
        return;
    }
    const std::size_t memory = ::mallinfo2().uordblks;
    const long perCycle = (static_cast<long>(memory) - static_cast<long>(memoryBefore)) / CYCLES;
    RecordProperty("bytes_a_cycle", static_cast<int>(perCycle));
    std::printf("%ld bytes a cycle\n", perCycle);
    EXPECT_LT(perCycle, 4096);
    EXPECT_EQ(camera->frames().alive, 0);
}

TEST_F(Growth, FailedStartsLeaveNothingOpen) {
    for (int i = 0; i < 5; ++i)
        started("camera", 16, 16);
    const int before = descriptors();
    for (int i = 0; i < 30; ++i) {
        camera->refuseOpen(cameras::Error(i % 3 == 0 ? "no" : "", i % 3 == 0 ? -1 : 0));
        camera->refuseInput(cameras::Error(i % 3 == 1 ? "no" : "", i % 3 == 1 ? -1 : 0));
        camera->refuseStart(cameras::Error(i % 3 == 2 ? "no" : "", i % 3 == 2 ? -1 : 0));
        started("camera", 16, 16);
        ASSERT_FALSE(camera->isOpen()) << i;
    }
    EXPECT_EQ(descriptors(), before);
}
