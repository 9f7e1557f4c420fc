// What the kernel's driver can be made to do wrong, seen through the library's interface. One vivid camera,
// /dev/video0, is there at the start of each test and at its end.
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <QtCore/QProcess>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

// vivid's own controls.
enum Control : uint32_t {
    WrapSequenceNumber = 0x00f0f026,
    PercentageOfDroppedBuffers = 0x00f0f040,
    Disconnect = 0x00f0f041,
    BufferError = 0x00f0f042,
    RequestBuffersError = 0x00f0f043,
    StreamOnError = 0x00f0f045,
    FatalStreamingError = 0x00f0f046,
};

void setControl(Control control, int value = 1) {
    const int descriptor = open("/dev/video0", O_RDWR | O_CLOEXEC);
    ASSERT_GE(descriptor, 0) << std::strerror(errno);
    v4l2_control setting = {};
    setting.id = control;
    setting.value = value;
    EXPECT_EQ(ioctl(descriptor, VIDIOC_S_CTRL, &setting), 0) << std::strerror(errno);
    close(descriptor);
}

void bindDriver(const std::string& action) {
    shell("echo vivid.0 > /sys/bus/platform/drivers/vivid/" + action);
}

// The controls that guest/cameras.sh sets are new with each binding.
void bindAgain() {
    bindDriver("bind");
    cameraShell("set_vivid_picture");
}

void expectHealthyCapture(const QString& camera) {
    Capture capture(camera, 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(showsColorBars(capture.picture()));
}

// Starts a capture that the driver refuses and answers what was said about it.
std::string refusal(const QString& camera) {
    testing::internal::CaptureStderr();
    {
        Capture capture(camera, 640, 480);
        EXPECT_TRUE(capture.waitForStartUp());
        EXPECT_TRUE(capture.takePicture().data.empty());
    }
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(VividFaults, ABufferWithTheErrorFlagIsDroppedAndCountedAndTheCaptureGoesOn) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_EQ(capture.droppedFrames(), 0u);
    setControl(BufferError);
    EXPECT_TRUE(waitUntil([&] { return capture.droppedFrames() == 1; }));
    EXPECT_TRUE(capture.waitForFrames(20));
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(showsColorBars(capture.picture()));
    EXPECT_EQ(capture.statistics().ended.toStdString(), "");
}

TEST(VividFaults, BuffersThatTheDriverDropsAreCountedAsLost) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    setControl(PercentageOfDroppedBuffers, 40);
    EXPECT_TRUE(capture.waitFor([](const OVideoStatistics& now) { return now.lost >= 10; }));
    EXPECT_TRUE(capture.waitForFrames(10));
    setControl(PercentageOfDroppedBuffers, 0);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(showsColorBars(capture.picture()));
    EXPECT_EQ(capture.statistics().ended.toStdString(), "");
}

TEST(VividFaults, ASequenceNumberThatWrapsIsNoLoss) {
    setControl(WrapSequenceNumber, 1);
    {
        Capture capture(onlyCamera(), 320, 240);
        // It starts 128 below the end. A slow machine loses frames as well, but not all that there are
        // numbers.
        EXPECT_TRUE(capture.waitFor([](const OVideoStatistics& now) {
            return now.delivered > 1 && now.delivered + now.lost >= 150;
        }));
        ASSERT_TRUE(capture.waitForPicture());
        EXPECT_LT(capture.statistics().lost, uint64_t(1) << 31);
        EXPECT_EQ(capture.statistics().ended.toStdString(), "");
    }
    setControl(WrapSequenceNumber, 0);
}

TEST(VividFaults, AfterAFatalErrorTheLastFrameStaysAndANewCaptureWorks) {
    const QString camera = onlyCamera();
    {
        Capture capture(camera, 640, 480);
        ASSERT_TRUE(capture.waitForPicture());
        setControl(FatalStreamingError);
        ASSERT_TRUE(capture.waitForEnd());
        const uint32_t number = capture.takePicture().frameNumber;
        EXPECT_TRUE(showsColorBars(capture.picture()));
        EXPECT_EQ(capture.takePicture().frameNumber, number);
    }
    EXPECT_EQ(onlyCamera(), camera);
    expectHealthyCapture(camera);
}

// The driver refuses once, and the next best mode is tried.
TEST(VividFaults, RefusedBuffersOfOneModeDoNotFailTheStart) {
    const QString camera = onlyCamera();
    setControl(RequestBuffersError);
    expectHealthyCapture(camera);
}

TEST(VividFaults, ARefusedStreamOnOfOneModeDoesNotFailTheStart) {
    const QString camera = onlyCamera();
    setControl(StreamOnError);
    expectHealthyCapture(camera);
}

TEST(VividFaults, ACameraThatAnotherProcessUsesIsReportedAsInUse) {
    const QString camera = onlyCamera();
    QProcess holder;
    holder.setProcessChannelMode(QProcess::MergedChannels);
    holder.start(QStringLiteral("v4l2-ctl"),
                 {QStringLiteral("-d/dev/video0"), QStringLiteral("--stream-mmap")});
    ASSERT_TRUE(holder.waitForReadyRead(120000)); // it prints a mark for each frame
    EXPECT_PRED_FORMAT2(testing::IsSubstring, " is in use by another program", refusal(camera));
    holder.kill();
    EXPECT_TRUE(holder.waitForFinished(120000));
    expectHealthyCapture(camera);
}

TEST(VividFaults, StopNeverWaitsForAFrame) {
    EXPECT_TRUE(stopsWithin(100, onlyCamera(),
                            [](bool frames) { setControl(PercentageOfDroppedBuffers, frames ? 0 : 100); }));
}

TEST(VividFaults, ADisconnectedCameraEndsTheCaptureAndLeavesTheListingUntilItIsBack) {
    const QString camera = onlyCamera();
    {
        Capture capture(camera, 640, 480);
        ASSERT_TRUE(capture.waitForPicture());
        setControl(Disconnect); // the node stays and answers nothing but "no such device"
        ASSERT_TRUE(capture.waitForEnd());
        EXPECT_TRUE(showsColorBars(capture.takePicture()));
        EXPECT_EQ(cameras().size(), 0);
    }
    // The driver connects it again when its last user has closed it.
    EXPECT_EQ(onlyCamera(), camera);
    expectHealthyCapture(camera);
}

TEST(VividFaults, AnUnboundCameraComesBackUnderItsIdentifier) {
    const QString camera = onlyCamera();
    EXPECT_EQ(camera.toStdString(), "bus-platform:vivid-000"); // as in the first release
    Capture capture(camera, 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    bindDriver("unbind");
    ASSERT_TRUE(capture.waitForEnd());
    EXPECT_EQ(cameras().size(), 0);
    EXPECT_TRUE(showsColorBars(capture.takePicture()));

    bindAgain();
    EXPECT_EQ(onlyCamera(), camera);
    expectHealthyCapture(camera); // while the old capture still holds what is left of the old device
    capture.stop();
    expectHealthyCapture(camera);
}
