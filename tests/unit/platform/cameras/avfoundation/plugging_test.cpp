// What a monitor of cameras is told, and what it does for the framework to tell it.
#include "base/monotonic_clock.h"
#include "platform/cameras/camera_monitor.h"
#include "support/machine.h"
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <poll.h>

namespace ostrel::tests {

using cameras::CameraMonitor;

class AvPlugging : public AvFoundationTest {
protected:
    void plug(const std::string& identifier) {
        device.identifier = identifier;
        standin::plug(device);
    }
    static bool isReadable(const CameraMonitor& one, int milliseconds) {
        pollfd descriptor = {one.descriptor(), POLLIN, 0};
        return ::poll(&descriptor, 1, milliseconds) == 1;
    }
    static std::vector<std::string> take(CameraMonitor& from) {
        std::vector<std::string> result;
        for (const cameras::CameraChange& change : from.changes())
            result.push_back((change.added ? "+" : "-") + change.identifier);
        from.accept();
        return result;
    }
    // What a wait brings, however often somebody must look for it.
    static std::vector<std::string> next(CameraMonitor& from) {
        const int64_t hang = std::chrono::duration_cast<std::chrono::nanoseconds>(support::HANG).count();
        EXPECT_TRUE(from.waitUntil(monotonicNanoseconds() + hang));
        return take(from);
    }

    const support::Machine machine{provider};
};

using List = std::vector<std::string>;

TEST_F(AvPlugging, IsToldAtOnceWhereTheRunLoopTurns) {
    CameraMonitor monitor;
    standin::setLoopTurning(true);
    plug("A");
    EXPECT_TRUE(isReadable(monitor, 0));
    EXPECT_EQ(take(monitor), List{"+A"});
    EXPECT_FALSE(isReadable(monitor, 1500)) << "nobody needs to look again";
    standin::unplug("A");
    EXPECT_TRUE(isReadable(monitor, 0));
    EXPECT_EQ(take(monitor), List{"-A"});
}

TEST_F(AvPlugging, IsNoticedByAWaitInAProgramWithoutARunLoop) {
    CameraMonitor monitor;
    standin::freezeList();
    plug("A");
    EXPECT_EQ(next(monitor), List{"+A"});
    standin::unplug("A");
    plug("B");
    EXPECT_EQ(next(monitor), (List{"-A", "+B"}));
}

TEST_F(AvPlugging, AProgramWithoutARunLoopMayPollTheDescriptorInstead) {
    CameraMonitor monitor;
    standin::freezeList();
    plug("A");
    List told;
    while (told.empty() && isReadable(monitor, static_cast<int>(support::HANG.count()) * 1000))
        told = take(monitor);
    EXPECT_EQ(told, List{"+A"});
}

TEST_F(AvPlugging, OnAnotherThreadWhatTheMainLoopNoticesIsWaitedFor) {
    standin::freezeList();
    std::atomic<bool> watches{false};
    std::thread other([&] {
        CameraMonitor monitor;
        watches = true;
        EXPECT_EQ(next(monitor), List{"+A"});
        EXPECT_EQ(standin::loopTurns(), 1) << "which was the main thread's";
    });
    EXPECT_TRUE(comesTrue([&] { return watches.load(); }));
    plug("A");
    provider->list();
    other.join();
}

TEST_F(AvPlugging, MonitorsComeAndGoWhileCamerasDo) {
    std::atomic<bool> over{false};
    std::thread hand([&] {
        while (!over) {
            plug("A");
            standin::unplug("A");
        }
    });
    for (int i = 0; i < 100; ++i) {
        CameraMonitor monitor;
        take(monitor);
    }
    over = true;
    hand.join();
}

} // namespace ostrel::tests
