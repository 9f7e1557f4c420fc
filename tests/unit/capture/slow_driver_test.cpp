// While the driver of one camera takes its time, nobody waits for it who only asks, and no other camera.
#include "driver_test.h"

#include "platform/cameras/v4l2/v4l2_provider.h"
#include "support/v4l2/scripted_discovery.h"
#include "support/v4l2/scripted_kernel.h"

#include <ostrel/camera_state.h>
#include <ostrel/device_details.h>
#include <ostrel/device_id.h>
#include <ostrel/devices.h>
#include <ostrel/statistics.h>

#include <linux/videodev2.h>

#include <future>

using namespace ostrel;
using namespace ostrel::support;

namespace {

const char* const SLOW = "/dev/video0";
const char* const QUICK = "/dev/video1";

// Not a time that a call may take, but one that no call takes without waiting: the driver takes as long as
// the test.
const std::chrono::milliseconds AT_ONCE(300);

struct SlowCall {
    const char* name;
    unsigned long call;
};

class SlowDriver : public DriverTest, public testing::WithParamInterface<SlowCall> {
protected:
    std::shared_ptr<ScriptedKernel> kernel = std::make_shared<ScriptedKernel>();
    std::shared_ptr<ScriptedDiscovery> discovery = std::make_shared<ScriptedDiscovery>();
    std::string slow, quick; // identifiers

    SlowDriver() {
        plug(SLOW, "slow");
        plug(QUICK, "quick");
        const auto provider = cameras::v4l2::makeProvider(kernel, discovery);
        machine.has(provider);
        slow = provider->list().at(0)->identifier();
        quick = provider->list().at(1)->identifier();
    }
    void plug(const char* path, const char* busInfo) {
        DeviceScript device;
        device.formats = {raw(V4L2_PIX_FMT_GREY, {only(16, 8)})};
        device.busInfo = busInfo;
        kernel->plug(path, device);
        discovery->add(path);
    }
    template <typename Call>
    static void atOnce(const char* what, Call call) {
        const auto before = std::chrono::steady_clock::now();
        call();
        EXPECT_LT(std::chrono::steady_clock::now() - before, AT_ONCE) << what;
    }
    void askEverything() {
        const QString id = QString::fromUtf8(slow.c_str());
        atOnce("videoDevices", [] { EXPECT_EQ(videoDevices().size(), 2); });
        atOnce("devices", [] { qDeleteAll(OVideoInfoUnix::ptr()->devices()); });
        atOnce("deviceByID", [&] { EXPECT_FALSE(OVideoInfoUnix::ptr()->deviceByID(id).isNull()); });
        atOnce("OVideoCameraState", [&] { EXPECT_TRUE(OVideoCameraState(id).isKnown()); });
        atOnce("videoStatistics", [&] {
            OVideoStatistics figures;
            videoStatistics(id, figures);
        });
        atOnce("videoDeviceID", [&] { EXPECT_EQ(videoDeviceID(id, nullptr), id); });
        atOnce("videoNodes", [] { EXPECT_EQ(videoNodes().size(), 2); });
    }
    void captureTheOther() {
        OVideoCaptureMacX driver;
        atOnce("startCapture of another", [&] { driver.startCapture(quick.c_str(), 16, 8); });
        atOnce("the start-up of another", [&] { driver.wait(); });
        FrameScript frame;
        frame.bytes.assign(16 * 8, 7);
        ASSERT_TRUE(kernel->feed(QUICK, frame));
        ASSERT_TRUE(kernel->waitUntilIdle(QUICK));
        EXPECT_EQ(poll(driver).size(), 16u * 8 * 4);
        atOnce("stop of another", [&] { driver.stopVideoCapture(); });
    }
};

} // namespace

TEST_P(SlowDriver, HoldsUpNobodyWhoOnlyAsks) {
    OVideoCaptureMacX
        second; // before the other thread's: Qt takes the thread of its first object for the main one
    const SlowCall& slowCall = GetParam();
    const std::shared_ptr<Gate> gate = kernel->hold(SLOW, slowCall.call);
    auto life = std::async(std::launch::async, [&] { // of the one driver that has to wait
        OVideoCaptureMacX driver;
        driver.startCapture(slow.c_str(), 16, 8);
        driver.wait();
        driver.stopVideoCapture();
    });
    gate->awaitArrivals(1);
    const int before = kernel->callsOn(SLOW);
    askEverything();
    EXPECT_EQ(kernel->callsOn(SLOW), before) << "no call on a node that is open in this process";
    atOnce("startCapture of the same", [&] { second.startCapture(slow.c_str(), 16, 8); });
    askEverything();
    captureTheOther();
    gate->open();
    life.get();
    second.wait();
    second.stopVideoCapture();
    EXPECT_EQ(kernel->openDescriptors(), 0);
}

INSTANTIATE_TEST_SUITE_P(Calls, SlowDriver,
                         testing::Values(SlowCall{"Open", OPEN}, SlowCall{"SetFormat", VIDIOC_S_FMT},
                                         SlowCall{"RequestBuffers", VIDIOC_REQBUFS},
                                         SlowCall{"StreamOn", VIDIOC_STREAMON},
                                         SlowCall{"StreamOff", VIDIOC_STREAMOFF}, SlowCall{"Close", CLOSE}),
                         [](const auto& instance) { return std::string(instance.param.name); });
