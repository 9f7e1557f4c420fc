// Stops at moments that the interface leaves open.
#include "driver_test.h"

#include <future>

using namespace ostrel;
using support::Gate;
using support::Lines;

namespace {

// A driver whose thread comes to a gate before it does anything.
class GatedDriver : public OVideoCaptureMacX {
public:
    explicit GatedDriver(Gate& gate) : gate_(gate) {}
    ~GatedDriver() override { wait(); } // run() is this class's

protected:
    void run() override {
        gate_.pass();
        OVideoCaptureMacX::run();
    }

private:
    Gate& gate_;
};

class MisuseStop : public support::DriverTest {
protected:
    MisuseStop() : camera(attach("camera")) {}
    const std::shared_ptr<support::ScriptedCamera> camera;
    Gate gate;
};

} // namespace

TEST_F(MisuseStop, WhileTheStartUpIsStillRunningStopReturnsAndTheCaptureEndsBehindIt) {
    camera->opening().shut();
    OVideoCaptureMacX driver;
    driver.startCapture("camera", 16, 16);
    camera->opening().awaitArrivals(1);
    err.takeLines();
    driver.stopVideoCapture();
    EXPECT_EQ(err.takeLines(), (Lines{stopping(&driver), stopping1(&driver), "after stop"}));
    EXPECT_TRUE(poll(driver).empty());
    VideoFrame frame = marked();
    driver.selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    camera->opening().open();
    driver.wait();
    EXPECT_EQ(err.takeLines(), joined({startUp(), tearDown()}));
    EXPECT_FALSE(camera->isRunning());
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(MisuseStop, DroppedWhileTheStartUpIsStillRunningTheDriverWaitsForIt) {
    camera->opening().shut();
    auto driver = std::make_unique<OVideoCaptureMacX>();
    driver->startCapture("camera", 16, 16);
    camera->opening().awaitArrivals(1);
    std::atomic<bool> opened{false};
    std::thread client([&] {
        driver.reset();
        EXPECT_TRUE(opened);
    });
    opened = true;
    camera->opening().open();
    client.join();
    EXPECT_FALSE(camera->isOpen());
    const Lines lines = err.takeLines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(Lines(lines.end() - 3, lines.end()), tearDown());
}

TEST_F(MisuseStop, WhileAFailingStartUpIsRunning) {
    camera->opening().shut();
    camera->refuseOpen(cameras::Error("broken"));
    OVideoCaptureMacX driver;
    driver.startCapture("camera", 16, 16);
    camera->opening().awaitArrivals(1);
    driver.stopVideoCapture();
    err.takeLines();
    camera->opening().open();
    driver.wait();
    EXPECT_EQ(err.takeLines(), joined({{"NSLog: Error opening camera: broken"}, tearDown()}));
}

TEST_F(MisuseStop, BeforeRunBeganTheCameraIsNeverOpened) {
    gate.shut();
    GatedDriver driver(gate);
    driver.startCapture("camera", 16, 16);
    gate.awaitArrivals(1);
    err.takeLines();
    driver.stopVideoCapture();
    EXPECT_EQ(err.takeLines(), joined({{stopping(&driver), stopping1(&driver), "after stop"}, tearDown()}));
    gate.open();
    driver.wait();
    EXPECT_EQ(err.takeLines(), Lines{run(&driver)});
    EXPECT_EQ(camera->opens(), 0);
}

TEST_F(MisuseStop, ReadersBeforeRunBeganFindNothing) {
    gate.shut();
    GatedDriver driver(gate);
    driver.startCapture("camera", 16, 16);
    EXPECT_TRUE(poll(driver).empty());
    EXPECT_EQ(driver.width(), 16);
    gate.open();
    driver.wait();
    camera->deliver(1);
    EXPECT_EQ(support::numberIn(poll(driver)), 1);
}

TEST_F(MisuseStop, StartAtOnceStopAtOnceManyTimes) {
    for (int i = 0; i < 200; ++i) {
        OVideoCaptureMacX driver;
        driver.startCapture("camera", 16, 16);
        if (i % 3 == 0)
            poll(driver);
        if (i % 2)
            driver.stopVideoCapture();
    }
    EXPECT_FALSE(camera->isOpen());
    EXPECT_FALSE(camera->isRunning());
}

TEST_F(MisuseStop, BothSidesStopAtOnceAndTheSessionIsGivenBackOnce) {
    // The start-up and the stop race with each other; which of them is last gives the session back.
    for (int i = 0; i < 200; ++i) {
        camera->opening().shut();
        OVideoCaptureMacX driver;
        driver.startCapture("camera", 16, 16);
        camera->opening().awaitArrivals(i + 1);
        err.takeLines();
        camera->opening().open();
        driver.stopVideoCapture();
        driver.wait();
        Lines lines = err.takeLines();
        for (const std::string& line : tearDown())
            EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
        EXPECT_FALSE(camera->isOpen());
    }
}
