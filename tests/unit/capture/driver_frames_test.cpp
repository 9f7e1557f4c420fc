#include "driver_test.h"

#include <ostrel/processing.h>

#include "support/leaks.h"

#include <cstddef>
#include <type_traits>

using namespace ostrel;
using support::numberIn;

namespace {
using DriverFrames = support::DriverTest;
}

TEST(CapturedFrame, HasItsFieldsInOrder) {
    EXPECT_EQ(offsetof(VideoFrame, formatId), 0u);
    EXPECT_EQ(offsetof(VideoFrame, frameNumber), 4u);
    EXPECT_EQ(offsetof(VideoFrame, width), 8u);
    EXPECT_EQ(offsetof(VideoFrame, height), 12u);
    EXPECT_EQ(offsetof(VideoFrame, timestamp), 16u);
    EXPECT_TRUE(std::is_unsigned<decltype(VideoFrame::frameNumber)>::value);
    EXPECT_TRUE((std::is_same<decltype(VideoFrame::data), std::vector<unsigned char>>::value));
}

TEST_F(DriverFrames, UnknownCameraOnANewDriverFillsAnEmptyFrame) {
    attach("camera");
    OVideoCaptureMacX driver;
    start(driver, "no such camera", 320, 240);
    VideoFrame frame = marked();
    const uint32_t before = OVideoCommon::get_time();
    driver.selfVideoFrame(frame);
    EXPECT_EQ(frame.formatId, 4);
    EXPECT_EQ(frame.frameNumber, 0u);
    EXPECT_EQ(frame.width, 0);
    EXPECT_EQ(frame.height, 0);
    EXPECT_LE(frame.timestamp - before, 60000u);
    EXPECT_TRUE(frame.data.empty());
    std::vector<unsigned char> bytes = {1, 2};
    driver.videoFrame(bytes);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(driver.width(), 0);
    EXPECT_EQ(driver.height(), 0);
    EXPECT_TRUE(driver.cameraUniqueId().isEmpty());
    EXPECT_FALSE(driver.isRunning());
}

TEST_F(DriverFrames, NullAndEmptyIdentifiersAreRefusedLikeUnknownOnes) {
    attach("camera");
    OVideoCaptureMacX driver;
    for (const char* identifier : {static_cast<const char*>(nullptr), ""}) {
        start(driver, identifier, 320, 240);
        EXPECT_EQ(driver.width(), 0);
        EXPECT_TRUE(poll(driver).empty());
    }
}

TEST_F(DriverFrames, CameraWithAnEmptyIdentifierCanBeCaptured) {
    const auto camera = attach("");
    const auto driver = started("", 16, 16);
    camera->deliver(3);
    EXPECT_EQ(numberIn(poll(*driver)), 3);
    EXPECT_EQ(driver->width(), 16);
}

TEST_F(DriverFrames, NonAsciiIdentifiersAreReadAsLatin1AndNotFoundWhenTheyAreUtf8) {
    const auto camera = attach("cam-\xc3\xa9"); // U+00E9
    OVideoCaptureMacX driver;
    start(driver, "cam-\xc3\xa9", 16, 16); // as Latin-1: two letters
    EXPECT_EQ(driver.width(), 0);
    start(driver, "cam-\xe9", 16, 16); // found by the look-up, but these are not the identifier's bytes
    EXPECT_EQ(driver.cameraUniqueId(), QString::fromUtf8("cam-\xc3\xa9"));
    EXPECT_EQ(camera->opens(), 0);
    EXPECT_EQ(err.takeLines().back(), ">>> camera failed");
}

TEST_F(DriverFrames, VeryLongIdentifiersWork) {
    const std::string identifier(100000, 'x');
    const auto camera = attach(identifier);
    const auto driver = started(identifier.c_str(), 16, 16);
    camera->deliver(4);
    EXPECT_EQ(numberIn(poll(*driver)), 4);
    EXPECT_EQ(driver->cameraUniqueId().toStdString(), identifier);
    OVideoCaptureMacX other;
    start(other, (identifier + "x").c_str(), 16, 16);
    EXPECT_EQ(other.width(), 0);
}

TEST_F(DriverFrames, BeforeTheFirstFrameThereIsNone) {
    attach("camera");
    const auto driver = started("camera", 320, 240);
    std::vector<unsigned char> bytes = {1, 2, 3};
    driver->videoFrame(bytes);
    EXPECT_TRUE(bytes.empty());
    VideoFrame frame = marked();
    driver->selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    EXPECT_EQ(driver->cameraUniqueId(), QString("camera"));
    EXPECT_EQ(driver->width(), 320);
    EXPECT_EQ(driver->height(), 240);
}

TEST_F(DriverFrames, NotStartedOrStoppedThereIsNone) {
    const support::KeptByDesign neverStarted; // its session object is never given back
    OVideoCaptureMacX driver;
    VideoFrame frame = marked();
    driver.selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    std::vector<unsigned char> bytes = {1};
    driver.videoFrame(bytes);
    EXPECT_TRUE(bytes.empty());
}

TEST_F(DriverFrames, AreFilledWhole) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 32, 16);
    camera->deliver(100);
    camera->deliver(200);
    VideoFrame frame = marked();
    frame.data.assign(1000000, 9);
    const uint32_t before = OVideoCommon::get_time();
    driver->selfVideoFrame(frame);
    EXPECT_EQ(frame.formatId, 4);
    EXPECT_EQ(frame.frameNumber, 2u);
    EXPECT_EQ(frame.width, 32);
    EXPECT_EQ(frame.height, 16);
    EXPECT_LE(frame.timestamp - before, 60000u);
    EXPECT_EQ(frame.data.size(), 32u * 16 * 4);
    EXPECT_EQ(numberIn(frame.data), 200);
    EXPECT_EQ(poll(*driver), frame.data);
}

TEST_F(DriverFrames, TheSameFrameComesAgainUntilThereIsANewOne) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 16, 16);
    camera->deliver(7);
    for (int i = 0; i < 5; ++i) {
        VideoFrame frame;
        driver->selfVideoFrame(frame);
        EXPECT_EQ(numberIn(frame.data), 7);
        EXPECT_EQ(frame.frameNumber, 1u);
    }
    EXPECT_EQ(camera->frames().conversions, 1);
}

TEST_F(DriverFrames, AfterAStopTheValuesOfTheLastStartStayAndFramesAreGone) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 32, 16);
    camera->deliver(1);
    driver->stopVideoCapture();
    EXPECT_EQ(driver->width(), 32);
    EXPECT_EQ(driver->height(), 16);
    EXPECT_EQ(driver->cameraUniqueId(), QString("camera"));
    EXPECT_TRUE(poll(*driver).empty());
    VideoFrame frame = marked();
    driver->selfVideoFrame(frame);
    EXPECT_TRUE(untouched(frame));
    EXPECT_EQ(camera->frames().alive, 0);
}

TEST_F(DriverFrames, HandleIsAlwaysNull) {
    const auto camera = attach("camera");
    OVideoCaptureMacX driver;
    EXPECT_TRUE(driver.frame().isNull());
    start(driver, "camera", 16, 16);
    camera->deliver(1);
    EXPECT_TRUE(driver.frame().isNull());
    driver.stopVideoCapture();
    EXPECT_TRUE(driver.frame().isNull());
}

TEST_F(DriverFrames, UnpluggedCameraKeepsItsLastFrameAndStopsCleanly) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 16, 16);
    camera->deliver(5);
    detach(camera);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(numberIn(poll(*driver)), 5);
    driver->stopVideoCapture();
    EXPECT_FALSE(camera->isOpen());
    OVideoCaptureMacX again;
    start(again, "camera", 16, 16);
    EXPECT_EQ(again.width(), 0); // no longer listed
}

TEST_F(DriverFrames, PluggedInAgainItIsACameraLikeNew) {
    const auto before = attach("camera");
    const auto old = started("camera", 16, 16);
    detach(before);
    const auto after = attach("camera");
    const auto driver = started("camera", 16, 16);
    after->deliver(6);
    EXPECT_EQ(numberIn(poll(*driver)), 6);
    EXPECT_TRUE(poll(*old).empty());
    old->stopVideoCapture();
    EXPECT_FALSE(before->isOpen());
    after->deliver(7);
    EXPECT_EQ(numberIn(poll(*driver)), 7);
}
