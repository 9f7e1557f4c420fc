// The kernel's uvcvideo driver with the emulated USB webcam. Orders for the webcam go through the shell
// functions that plugged it in.
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <ostrel/device_details.h>
#include <ostrel/device_id.h>
#include <ostrel/devices.h>
#include <ostrel/native_frame.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

void tellWebcam(const std::string& order) {
    cameraShell("tell_webcam " + order);
}

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Those that the webcam sends at 1280x720.
std::set<std::string> picturesOfTheWebcam() {
    std::set<std::string> pictures;
    for (int i = 1;; ++i) {
        const std::string content =
            contentOf(std::string(std::getenv("VM_PICTURES")) + "/1280x720-" + std::to_string(i) + ".jpg");
        if (content.empty())
            return pictures;
        pictures.insert(content);
    }
}

int64_t monotonicNow() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * int64_t(1000000000) + now.tv_nsec;
}

} // namespace

TEST(Webcam, ItsMetadataNodeIsNotListed) {
    shell("test -c /dev/video1"); // the second node of the webcam
    EXPECT_EQ(videoDevices().size(), 1);
    EXPECT_EQ(videoDevices().first().toStdString(), "Emulated UVC Camera");
    const QList<OVideoNode> nodes = videoNodes();
    ASSERT_EQ(nodes.size(), 2);
    EXPECT_EQ(nodes[0].uniqueID(), onlyCamera());
    EXPECT_EQ(nodes[0].reason().toStdString(), "");
    EXPECT_EQ(nodes[1].uniqueID().toStdString(), "");
    EXPECT_NE(nodes[1].reason().toStdString().find("metadata"), std::string::npos);
}

TEST(Webcam, ItsIdentifierSaysWhatItIsAndWhereItIsPluggedIn) {
    const std::string identifier = onlyCamera().toStdString();
    EXPECT_EQ(identifier.rfind("usb-", 0), 0u) << identifier;
    EXPECT_NE(identifier.find("-at-vhci_hcd.0-usb-1:00"), std::string::npos) << identifier;
    EXPECT_EQ(videoDeviceID("/dev/video0"), onlyCamera());
}

TEST(Webcam, TwoOfOneSerialNumberAreToldApartByTheirPorts) {
    const QString first = onlyCamera();
    tellWebcam("plug twin");
    ASSERT_TRUE(waitUntil([] { return cameras().size() == 2; }));
    QStringList others = cameras();
    EXPECT_EQ(others.removeAll(first), 1) << others.join(" ").toStdString();
    ASSERT_EQ(others.size(), 1);
    tellWebcam("unplug");
    ASSERT_TRUE(waitUntil([&] { return cameras() == others; })); // under no name of the other one
    {
        Capture capture(others.first(), 640, 480);
        EXPECT_TRUE(capture.waitForPicture());
    }
    tellWebcam("unplug twin");
    tellWebcam("plug");
    EXPECT_TRUE(waitUntil([&] { return cameras() == QStringList(first); }));
}

TEST(Webcam, ANodeWithAnotherNameIsTheSameCamera) {
    const QString before = onlyCamera();
    shell("mv /dev/video0 /dev/video7 && mv /dev/video1 /dev/video0"); // the metadata bears the camera's name
    EXPECT_EQ(onlyCamera(), before);
    EXPECT_EQ(videoDeviceID("/dev/video7"), before);
    EXPECT_EQ(videoDeviceID("/dev/video0").toStdString(), "");
    {
        Capture capture(before, 640, 480);
        EXPECT_TRUE(capture.waitForPicture());
    }
    shell("mv /dev/video0 /dev/video1 && mv /dev/video7 /dev/video0");
    EXPECT_EQ(onlyCamera(), before);
}

TEST(Webcam, UnpluggedItIsNotListedThoughItsNodeStays) {
    // As in a container, whose nodes nobody removes.
    shell("mknod /dev/video7 c $(stat -c '0x%t 0x%T' /dev/video0) && rm /dev/video0 /dev/video1");
    const QString camera = onlyCamera();
    tellWebcam("unplug");
    EXPECT_TRUE(waitUntil([] { return cameras().isEmpty(); }));
    tellWebcam("plug");
    EXPECT_TRUE(waitUntil([] { return !cameras().isEmpty(); }));
    EXPECT_EQ(onlyCamera(), camera);
    shell("rm /dev/video7");
    EXPECT_EQ(onlyCamera(), camera);
}

TEST(Webcam, MotionJpegIsChosenWhereRawPicturesAreSlower) {
    Capture capture(onlyCamera(), 1280, 720);
    ASSERT_TRUE(capture.waitForPicture());
    const OVideoStatistics figures = capture.statistics();
    EXPECT_EQ(figures.grantedFormat.toStdString(), "MJPG");
    EXPECT_EQ(figures.grantedWidth, 1280);
    EXPECT_EQ(figures.grantedHeight, 720);
    EXPECT_DOUBLE_EQ(figures.grantedRate, 30);
    EXPECT_TRUE(showsStripes(capture.picture()));
}

TEST(Webcam, RawPicturesAreChosenWhereTheyAreAsFast) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_EQ(capture.statistics().grantedFormat.toStdString(), "YUYV");
    EXPECT_DOUBLE_EQ(capture.statistics().grantedRate, 30);
}

TEST(Webcam, PicturesMove) {
    Capture capture(onlyCamera(), 1280, 720);
    ASSERT_TRUE(capture.waitForPicture());
    const std::vector<uint8_t> before = capture.picture().data;
    EXPECT_TRUE(waitUntil([&] { return capture.waitForPicture() && capture.picture().data != before; }));
}

TEST(Webcam, NativePicturesAreByteForByteThoseThatItSent) {
    const std::set<std::string> sent = picturesOfTheWebcam();
    ASSERT_GE(sent.size(), 2u);
    const QSharedPointer<OVideoCaptureUnix> capture = quietVideoCapture();
    capture->startCapture(onlyCamera().toLatin1().constData(), 1280, 720);
    OVideoFrameReader reader(capture);
    OVideoNativeFrame frame;
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(nextNativeFrame(reader, frame, 120000), 1);
        EXPECT_EQ(frame.format().toStdString(), "MJPG");
        const std::string bytes(reinterpret_cast<const char*>(frame.data()), frame.bytesUsed());
        EXPECT_EQ(sent.count(bytes), 1u) << "picture " << i << " of " << bytes.size() << " bytes";
    }
}

TEST(Webcam, TimesAreThoseOfTheExposureBeforeTheFrameIsHad) {
    const int64_t begin = monotonicNow();
    const QSharedPointer<OVideoCaptureUnix> capture = quietVideoCapture();
    capture->startCapture(onlyCamera().toLatin1().constData(), 1280, 720);
    OVideoFrameReader reader(capture);
    VideoFrame frame;
    OVideoFrameFacts facts;
    int64_t before = begin;
    for (int i = 0; i < 10; ++i) {
        ASSERT_EQ(nextVideoFrame(reader, frame, 120000, &facts), 1);
        EXPECT_EQ(facts.timeSource(), OVideoFrameFacts::START_OF_EXPOSURE);
        EXPECT_GT(facts.captureTime(), before);
        EXPECT_LT(facts.captureTime(), monotonicNow());
        before = facts.captureTime();
    }
}

TEST(Webcam, TruncatedFramesAreDroppedAndCountedAndNeverShown) {
    tellWebcam("truncate 3");
    {
        Capture capture(onlyCamera(), 1280, 720);
        ASSERT_TRUE(capture.waitForPicture());
        // Every picture is asked for, so that those which only show their damage when they are decoded do so.
        EXPECT_TRUE(waitUntil([&] {
            EXPECT_TRUE(capture.waitForPicture());
            EXPECT_TRUE(showsStripes(capture.picture()));
            return capture.droppedFrames() >= 5 || testing::Test::HasFailure();
        }));
        EXPECT_EQ(capture.statistics().ended.toStdString(), "");
    }
    tellWebcam("truncate 0");
}

TEST(Webcam, StopNeverWaitsForAFrame) {
    // The emulated USB bus takes its time to give back the transfers that it was asked for.
    EXPECT_TRUE(stopsWithin(500, onlyCamera(), [](bool frames) { tellWebcam(frames ? "resume" : "stall"); }));
}

TEST(Webcam, UnpluggedItEndsTheCaptureAndPluggedInAgainItIsTheSameCamera) {
    const QString camera = onlyCamera();
    Capture capture(camera, 1280, 720);
    ASSERT_TRUE(capture.waitForPicture());
    tellWebcam("unplug");
    ASSERT_TRUE(capture.waitForEnd());
    EXPECT_TRUE(waitUntil([] { return cameras().isEmpty(); }));
    EXPECT_TRUE(showsStripes(capture.takePicture()));
    const uint32_t number = capture.picture().frameNumber;
    EXPECT_EQ(capture.takePicture().frameNumber, number);
    capture.stop();

    tellWebcam("plug");
    ASSERT_TRUE(waitUntil([] { return !cameras().isEmpty(); }));
    EXPECT_EQ(onlyCamera(), camera);
    Capture again(camera, 1280, 720);
    ASSERT_TRUE(again.waitForPicture());
    EXPECT_TRUE(showsStripes(again.picture()));
}
