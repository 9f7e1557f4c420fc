#include "platform/cameras/delivery_thread.h"

#include <atomic>
#include <csignal>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <poll.h>
#include <pthread.h>

namespace ostrel::tests {

using cameras::DeliveryThread;
using cameras::StopSignal;

namespace {

int64_t now() {
    timespec time = {};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<int64_t>(time.tv_sec) * 1000000000 + time.tv_nsec;
}

} // namespace

TEST(StopSignal, ItsDescriptorIsReadableOnceItIsRaised) {
    StopSignal signal;
    pollfd descriptor = {signal.descriptor(), POLLIN, 0};
    EXPECT_FALSE(signal.raised());
    EXPECT_EQ(::poll(&descriptor, 1, 0), 0);
    signal.raise();
    EXPECT_TRUE(signal.raised());
    EXPECT_EQ(::poll(&descriptor, 1, 0), 1);
    EXPECT_EQ(::poll(&descriptor, 1, 0), 1); // and stays so
}

TEST(StopSignal, SleepsUntilTheTimeGiven) {
    StopSignal signal;
    const int64_t until = now() + 20000000;
    EXPECT_FALSE(signal.sleepUntil(until));
    EXPECT_GE(now(), until);
    EXPECT_FALSE(signal.sleepUntil(0)); // long past
}

TEST(StopSignal, RaisingItEndsAnEndlessSleep) {
    StopSignal signal;
    std::thread other([&] { signal.raise(); });
    EXPECT_TRUE(signal.sleepUntil(std::numeric_limits<int64_t>::max()));
    other.join();
}

TEST(DeliveryThread, StopWaitsForTheBody) {
    DeliveryThread thread;
    std::atomic<bool> left{false};
    ASSERT_TRUE(thread.start("test", [&](const StopSignal& stop) {
        stop.sleepUntil(std::numeric_limits<int64_t>::max());
        left = true;
    }));
    EXPECT_TRUE(thread.running());
    EXPECT_FALSE(thread.isCurrent());
    thread.stop();
    EXPECT_TRUE(left);
    EXPECT_FALSE(thread.running());
    thread.stop(); // nothing to stop
}

TEST(DeliveryThread, CanBeStoppedFromInsideItsBody) {
    struct Shared {
        DeliveryThread thread;
        std::atomic<bool> stopped{false};
        std::atomic<bool> left{false};
        StopSignal go;
    };
    const auto shared = std::make_shared<Shared>();
    ASSERT_TRUE(shared->thread.start("test", [shared](const StopSignal& stop) {
        shared->go.sleepUntil(std::numeric_limits<int64_t>::max());
        EXPECT_TRUE(shared->thread.isCurrent());
        shared->thread.stop();
        EXPECT_TRUE(stop.raised());
        shared->stopped = true;
        shared->left = true;
    }));
    shared->go.raise();
    for (int i = 0; i < 20000 && !shared->left; ++i)
        ::poll(nullptr, 0, 1);
    EXPECT_TRUE(shared->stopped);
}

TEST(DeliveryThread, StartsAgain) {
    DeliveryThread thread;
    std::atomic<int> runs{0};
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(thread.start("test", [&](const StopSignal& stop) {
            ++runs;
            stop.sleepUntil(std::numeric_limits<int64_t>::max());
        }));
    thread.stop();
    EXPECT_EQ(runs, 3);
}

TEST(DeliveryThread, LeavesSignalsToTheClientsThreads) {
    DeliveryThread thread;
    std::atomic<bool> blocked{false};
    ASSERT_TRUE(thread.start("test", [&](const StopSignal& stop) {
        sigset_t mask;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        blocked = ::sigismember(&mask, SIGTERM) == 1 && ::sigismember(&mask, SIGUSR1) == 1;
        stop.sleepUntil(std::numeric_limits<int64_t>::max());
    }));
    thread.stop();
    EXPECT_TRUE(blocked);
    sigset_t own;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &own);
    EXPECT_EQ(::sigismember(&own, SIGTERM), 0);
}

} // namespace ostrel::tests
