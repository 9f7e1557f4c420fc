// The same assertions for the eventfd and for the pipe.
#include "base/wake_descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

namespace ostrel::tests {

namespace {

bool isReadable(const WakeDescriptor& wake) {
    pollfd descriptor = {wake.descriptor(), POLLIN, 0};
    return ::poll(&descriptor, 1, 0) == 1 && descriptor.revents == POLLIN;
}

} // namespace

TEST(Wake, ReadableFromTheFirstSetUntilItIsCleared) {
    const WakeDescriptor wake;
    ASSERT_TRUE(wake.valid());
    EXPECT_FALSE(isReadable(wake));
    wake.set();
    wake.set();
    EXPECT_TRUE(isReadable(wake));
    EXPECT_TRUE(wake.clear());
    EXPECT_FALSE(isReadable(wake));
    wake.set();
    EXPECT_TRUE(isReadable(wake));
}

TEST(Wake, ClearingWhatIsNotSetReturnsAtOnce) {
    const WakeDescriptor wake;
    EXPECT_FALSE(wake.clear());
    EXPECT_FALSE(isReadable(wake));
}

// More often than a pipe has room for.
TEST(Wake, SettingItAnyNumberOfTimesDoesNotBlockAndOneClearTakesAllBack) {
    const WakeDescriptor wake;
    for (int i = 0; i < 100000; ++i)
        wake.set();
    EXPECT_TRUE(isReadable(wake));
    EXPECT_TRUE(wake.clear());
    EXPECT_FALSE(isReadable(wake));
}

TEST(Wake, ProgramsThatAreStartedDoNotInheritIt) {
    const WakeDescriptor wake;
    EXPECT_TRUE(::fcntl(wake.descriptor(), F_GETFD) & FD_CLOEXEC);
}

} // namespace ostrel::tests
