#include "driver_test.h"

#include "support/leaks.h"

using namespace ostrel;
using support::Lines;

namespace {
using DriverLines = support::DriverTest;
}

TEST_F(DriverLines, OfACaptureFromStartToEnd) {
    const auto camera = attach("camera");
    auto driver = started("camera", 16, 16);
    const void* const address = driver.get();
    EXPECT_EQ(err.takeLines(), joined({{constructed(address), run(address)}, startUp()}));
    camera->deliver(1);
    VideoFrame frame;
    driver->selfVideoFrame(frame);
    poll(*driver);
    EXPECT_EQ(err.takeLines(), Lines());
    driver->stopVideoCapture();
    EXPECT_EQ(err.takeLines(), joined({{stopping(address), stopping1(address), "after stop"}, tearDown()}));
    driver.reset();
    EXPECT_EQ(err.takeLines(), (Lines{destroyed(address), stopping(address)}));
}

TEST_F(DriverLines, OfAnUnknownCameraAreNone) {
    OVideoCaptureMacX driver;
    err.takeLines();
    start(driver, "none", 16, 16);
    EXPECT_EQ(err.takeLines(), Lines());
    driver.stopVideoCapture();
    EXPECT_EQ(err.takeLines(), joined({{stopping(&driver), stopping1(&driver), "after stop"}, tearDown()}));
}

TEST_F(DriverLines, StopOfADriverNeverStartedWritesOnlyItsFirstLine) {
    const support::KeptByDesign neverStarted; // its session object is never given back
    OVideoCaptureMacX driver;
    err.takeLines();
    driver.stopVideoCapture();
    EXPECT_EQ(err.takeLines(), Lines{stopping(&driver)});
}

TEST_F(DriverLines, SecondStopWritesOnlyItsFirstLine) {
    attach("camera");
    const auto driver = started("camera", 16, 16);
    driver->stopVideoCapture();
    err.takeLines();
    driver->stopVideoCapture();
    EXPECT_EQ(err.takeLines(), Lines{stopping(driver.get())});
}

TEST_F(DriverLines, DestroyingACapturingDriverWritesAllOfItsEndInOrder) {
    attach("camera");
    auto driver = started("camera", 16, 16);
    const void* const address = driver.get();
    err.takeLines();
    driver.reset();
    EXPECT_EQ(
        err.takeLines(),
        joined({{destroyed(address), stopping(address), stopping1(address), "after stop"}, tearDown()}));
}

TEST_F(DriverLines, CameraThatDoesNotOpen) {
    const auto camera = attach("camera");
    camera->refuseOpen(cameras::Error("The camera is in use by another program.", EBUSY));
    const auto driver = started("camera", 16, 16);
    EXPECT_EQ(err.takeLines(),
              (Lines{constructed(driver.get()), run(driver.get()),
                     "NSLog: Error opening camera: The camera is in use by another program."}));
    EXPECT_TRUE(poll(*driver).empty());
    EXPECT_EQ(driver->width(), 16); // the driver knows nothing of it
    EXPECT_EQ(camera->opens(), 0);
}

TEST_F(DriverLines, CameraRefusedAsInput) {
    const auto camera = attach("camera");
    camera->refuseInput(cameras::Error("no \xe2\x80\x9c"
                                       "input\xe2\x80\x9d"));
    auto driver = started("camera", 16, 16);
    EXPECT_EQ(err.takeLines(), (Lines{constructed(driver.get()), run(driver.get()),
                                      "NSLog: Error adding input to capture session: no \xe2\x80\x9c"
                                      "input\xe2\x80\x9d"}));
    EXPECT_TRUE(camera->isOpen()); // until the driver is stopped
    driver->stopVideoCapture();
    EXPECT_FALSE(camera->isOpen());
}

TEST_F(DriverLines, OutputRefusedStartsTheSessionAnyway) {
    const auto camera = attach("camera");
    camera->refuseStart(cameras::Error("not enough USB bandwidth"));
    const auto driver = started("camera", 16, 16);
    EXPECT_EQ(err.takeLines(),
              joined({{constructed(driver.get()), run(driver.get()),
                       "NSLog: Error adding output to capture session: not enough USB bandwidth"},
                      startUp()}));
    camera->deliver(1);
    EXPECT_TRUE(poll(*driver).empty());
}

TEST_F(DriverLines, IdentifierThatDiffersInLetterCaseIsLookedUpButNotOpened) {
    const auto camera = attach("Camera");
    const auto driver = started("cAMERA", 16, 16);
    EXPECT_EQ(err.takeLines(), (Lines{constructed(driver.get()), run(driver.get()), ">>> camera failed"}));
    EXPECT_EQ(driver->cameraUniqueId(), QString("cAMERA"));
    EXPECT_EQ(driver->width(), 16);
    EXPECT_EQ(camera->opens(), 0);
    EXPECT_TRUE(poll(*driver).empty());
}

TEST_F(DriverLines, PaddedRowsAreRefusedWithTheirByteCountAtEachPoll) {
    const auto camera = attach("camera");
    camera->padRows(24);
    const auto driver = started("camera", 16, 10);
    camera->deliver(1);
    err.takeLines();
    VideoFrame frame = marked();
    driver->selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    EXPECT_TRUE(poll(*driver).empty());
    EXPECT_EQ(err.takeLines(), (Lines{"880", "880"})); // (16 * 4 + 24) * 10
    camera->padRows(0);
    camera->deliver(2);
    EXPECT_EQ(support::numberIn(poll(*driver)), 2);
    EXPECT_EQ(err.takeLines(), Lines());
}
