// Starts that the interface leaves open.
#include "driver_test.h"

using namespace ostrel;
using support::Lines;
using support::numberIn;

namespace {

class MisuseRestart : public support::DriverTest {
protected:
    MisuseRestart() : camera(attach("camera")), other(attach("other")) {}
    const std::shared_ptr<support::ScriptedCamera> camera, other;
};

} // namespace

TEST_F(MisuseRestart, RefusedStartWithASmallerSizeLeavesTheRunningCaptureItsRoom) {
    const auto driver = started("camera", 64, 48);
    camera->deliver(1);
    start(*driver, "no such camera", 1, 1); // replaces the buffer; size and camera stay
    EXPECT_EQ(driver->width(), 64);
    EXPECT_EQ(driver->height(), 48);
    EXPECT_EQ(driver->cameraUniqueId(), QString("camera"));
    EXPECT_EQ(poll(*driver).size(), 64u * 48 * 4);
    EXPECT_EQ(numberIn(poll(*driver)), 1);
    camera->deliver(2);
    VideoFrame frame;
    driver->selfVideoFrame(frame);
    EXPECT_EQ(numberIn(frame.data), 2);
    start(*driver, "no such camera", 0, 0);
    EXPECT_EQ(numberIn(poll(*driver)), 2);
}

TEST_F(MisuseRestart, RefusedStartOfAWrappingSizeLeavesTheRunningCaptureToo) {
    const auto driver = started("camera", 64, 48);
    camera->deliver(1);
    start(*driver, "no such camera", 65536, 16384);
    EXPECT_EQ(numberIn(poll(*driver)), 1);
    EXPECT_THROW(driver->startCapture("no such camera", -1, 1), std::bad_alloc);
    EXPECT_THROW(driver->startCapture("camera", 40000, 20000), std::bad_alloc);
    EXPECT_EQ(numberIn(poll(*driver)), 1);
    EXPECT_EQ(driver->width(), 64);
}

TEST_F(MisuseRestart, SecondStartOfTheSameCameraChangesTheSize) {
    const auto driver = started("camera", 16, 16);
    camera->deliver(1);
    start(*driver, "camera", 32, 24);
    EXPECT_EQ(driver->width(), 32);
    camera->deliver(2); // to both sessions; either may be the later one
    const std::vector<unsigned char> bytes = poll(*driver);
    EXPECT_TRUE(bytes.empty() || (bytes.size() == 32u * 24 * 4 && numberIn(bytes) == 2));
    driver->stopVideoCapture();
    EXPECT_FALSE(camera->isOpen());
    EXPECT_FALSE(camera->isRunning());
}

TEST_F(MisuseRestart, SecondStartWithAnotherCameraCapturesFromThatAndTheEndClosesBoth) {
    auto driver = started("camera", 16, 16);
    start(*driver, "other", 16, 16);
    EXPECT_EQ(driver->cameraUniqueId(), QString("other"));
    other->deliver(7);
    EXPECT_EQ(numberIn(poll(*driver)), 7);
    driver.reset();
    EXPECT_FALSE(camera->isOpen());
    EXPECT_FALSE(other->isOpen());
    camera->deliver(8); // to nobody
    other->deliver(9);
}

TEST_F(MisuseRestart, SecondStartWithASmallerSizeNeverWritesBeyondItsBuffer) {
    const auto driver = started("camera", 64, 48);
    camera->deliver(1);
    start(*driver, "camera", 8, 8);
    EXPECT_EQ(driver->width(), 8);
    err.takeLines();
    EXPECT_TRUE(poll(*driver).empty()); // the newest frame is still one of the size before
    EXPECT_EQ(err.takeLines(), Lines{"12288"});
}

TEST_F(MisuseRestart, SecondStartWaitsForTheFirstThatIsStillRunning) {
    camera->opening().shut();
    OVideoCaptureMacX driver;
    driver.startCapture("camera", 16, 16);
    camera->opening().awaitArrivals(1);
    std::thread opener([&] { camera->opening().open(); });
    driver.startCapture("other", 32, 32);
    opener.join();
    driver.wait();
    EXPECT_EQ(camera->sizesStarted(), (std::vector<std::pair<int, int>>{{16, 16}}));
    EXPECT_EQ(other->sizesStarted(), (std::vector<std::pair<int, int>>{{32, 32}}));
}

TEST_F(MisuseRestart, ManyStartsWithoutAStop) {
    auto driver = std::make_unique<OVideoCaptureMacX>();
    for (int i = 1; i <= 20; ++i)
        start(*driver, i % 2 ? "camera" : "other", 16, 16);
    EXPECT_EQ(driver->cameraUniqueId(), QString("other"));
    driver.reset();
    EXPECT_FALSE(camera->isRunning());
    EXPECT_FALSE(other->isRunning());
    EXPECT_FALSE(camera->isOpen());
    EXPECT_FALSE(other->isOpen());
}

TEST_F(MisuseRestart, StartAfterAStopCapturesNothingAndHarmsNothing) {
    const auto driver = started("camera", 16, 16);
    camera->deliver(1);
    driver->stopVideoCapture();
    start(*driver, "camera", 32, 24);
    camera->deliver(2);
    EXPECT_TRUE(poll(*driver).empty());
    VideoFrame frame = marked();
    driver->selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    EXPECT_FALSE(camera->isOpen());
    start(*driver, "no such camera", 8, 8);
    EXPECT_TRUE(poll(*driver).empty());
    driver->stopVideoCapture();
    driver->stopVideoCapture();
}

TEST_F(MisuseRestart, StartOfAnEmptySizeAfterAStop) {
    const auto driver = started("camera", 16, 16);
    driver->stopVideoCapture();
    start(*driver, "camera", 0, 0);
    VideoFrame frame = marked();
    driver->selfVideoFrame(frame);
    EXPECT_TRUE(frame.data.empty());
    EXPECT_EQ(frame.frameNumber, 0u);
}

TEST_F(MisuseRestart, FailedStartThenAGoodOne) {
    camera->refuseOpen(cameras::Error("in use"));
    const auto driver = started("camera", 16, 16);
    EXPECT_TRUE(poll(*driver).empty());
    camera->refuseOpen(cameras::Error());
    start(*driver, "camera", 16, 16);
    camera->deliver(5);
    EXPECT_EQ(numberIn(poll(*driver)), 5);
}

TEST_F(MisuseRestart, EndOfAFailedStartDoesNotDisturbAnotherDriversCapture) {
    camera->refuseOpen(cameras::Error("in use"));
    const auto failed = started("camera", 16, 16);
    camera->refuseOpen(cameras::Error());
    const auto good = started("camera", 16, 16);
    failed->stopVideoCapture(); // closes the camera, though it never opened it
    camera->deliver(5);
    EXPECT_EQ(numberIn(poll(*good)), 5);
    good->stopVideoCapture();
    EXPECT_FALSE(camera->isOpen());
}
