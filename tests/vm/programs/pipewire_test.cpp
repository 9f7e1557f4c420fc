// A camera of the kernel's that PipeWire has as well: vivid's, or the emulated webcam. Each test finds it
// idle and leaves it so.
#include "platform/cameras/pipewire/remote.h"
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <ostrel/camera_state.h>
#include <ostrel/device_id.h>
#include <ostrel/device_monitor.h>
#include <ostrel/devices.h>
#include <ostrel/modes.h>
#include <ostrel/pipewire.h>

#include <QtCore/QProcess>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

const int HANG_MS = 120000;
const char* const IT_CAPTURES = "it captures";

// A daemon that is slow because everything is must not look like a silent one.
class LongTimeout : public testing::Environment {
    void SetUp() override { cameras::pipewire::Remote::timeout = 30000000000; }
};
const testing::Environment* const LONG_TIMEOUT = testing::AddGlobalTestEnvironment(new LongTimeout);

std::string wayTo(const QString& camera) {
    return OVideoCameraState(camera).capturedBy().toStdString();
}

testing::AssertionResult isByPipeWire(const QString& camera) {
    const std::string way = wayTo(camera);
    return (way.rfind("PipeWire (v4l2_input.", 0) == 0 ? testing::AssertionSuccess()
                                                       : testing::AssertionFailure())
           << way;
}

bool isWebcam(const QString& camera) {
    return videoDevices()[camera].contains(QLatin1String("UVC"));
}

// The webcam's in a size that it has as motion JPEG, which is the one that shows a known picture.
class KnownCapture : public Capture {
public:
    explicit KnownCapture(const QString& camera)
        : Capture(camera, isWebcam(camera) ? 1280 : 640, isWebcam(camera) ? 720 : 480),
          webcam_(isWebcam(camera)) {}

    testing::AssertionResult showsIt() {
        if (!waitForPicture())
            return testing::AssertionFailure() << "no picture";
        return webcam_ ? showsStripes(picture()) : showsColorBars(picture());
    }

private:
    const bool webcam_;
};

// PipeWire may need a moment to let go of it.
testing::AssertionResult comesByV4l2(const QString& camera) {
    testing::AssertionResult shown = testing::AssertionFailure();
    const bool comes = waitUntil([&] {
        KnownCapture capture(camera);
        shown = capture.showsIt();
        return wayTo(camera).rfind("V4L2 (/dev/video", 0) == 0;
    });
    return comes ? shown : testing::AssertionFailure() << wayTo(camera);
}

// What was said of a start that has to fail.
std::string refusal(const QString& camera) {
    KnownCapture capture(camera);
    EXPECT_TRUE(capture.waitForStartUp());
    EXPECT_TRUE(capture.takePicture().data.empty());
    return OVideoCameraState(camera).refused().toStdString();
}

// This program once more, with PipeWire and without the camera's node.
class OtherConsumer {
public:
    OtherConsumer() {
        process_.setProcessChannelMode(QProcess::MergedChannels);
        process_.start(
            QString::fromLatin1("bash"),
            QStringList() << QString::fromLatin1("-c")
                          << QString::fromLatin1(". \"$VM_TESTS/guest/cameras.sh\" && "
                                                 "in_own_dev '' \"$TEST\" --gtest_filter=Consumer.*"));
    }
    ~OtherConsumer() {
        process_.closeWriteChannel();
        EXPECT_TRUE(process_.waitForFinished(HANG_MS));
        EXPECT_EQ(process_.exitCode(), 0) << (said_ + process_.readAll()).toStdString();
    }
    testing::AssertionResult captures() {
        while (!said_.contains(IT_CAPTURES)) {
            if (!process_.waitForReadyRead(HANG_MS))
                return testing::AssertionFailure() << said_.toStdString();
            said_ += process_.readAll();
        }
        return testing::AssertionSuccess();
    }

private:
    QProcess process_;
    QByteArray said_;
};

} // namespace

TEST(Consumer, HasTheCameraWithoutItsNodeUntilTheInputEnds) {
    ASSERT_TRUE(waitUntil([] { return vm::cameras().size() == 1; }));
    const QString camera = onlyCamera();
    EXPECT_EQ(camera.toStdString().rfind("pipewire-v4l2_input.", 0), 0u) << camera.toStdString();
    KnownCapture capture(camera);
    EXPECT_TRUE(capture.showsIt());
    EXPECT_TRUE(isByPipeWire(camera));
    std::puts(IT_CAPTURES);
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
}

TEST(Idle, IsOneCameraThatComesByV4l2) {
    ASSERT_TRUE(waitUntil([] { return OVideoPipeWire().cameras() == 1; }));
    EXPECT_EQ(OVideoPipeWire().addedCameras(), 0);
    const QString camera = onlyCamera();
    EXPECT_EQ(camera, videoDeviceID("/dev/video0"));
    EXPECT_TRUE(comesByV4l2(camera));
}

TEST(HeldByV4l2, IsRefusedByBothWays) {
    const QString camera = onlyCamera();
    QProcess holder;
    holder.setProcessChannelMode(QProcess::MergedChannels);
    holder.start(QString::fromLatin1("v4l2-ctl"), QStringList() << QString::fromLatin1("-d/dev/video0")
                                                                << QString::fromLatin1("--stream-mmap"));
    ASSERT_TRUE(holder.waitForReadyRead(HANG_MS)); // it prints a mark for each frame
    const std::string refused = refusal(camera);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "(/dev/video0) is in use by another program", refused);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "; and by another way: ", refused);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "(PipeWire) is in use by another program", refused);
    holder.kill();
    EXPECT_TRUE(holder.waitForFinished(HANG_MS));
    EXPECT_TRUE(comesByV4l2(camera));
}

// One other consumer for all of its tests, and afterwards the camera comes by V4L2 again, under its
// identifier.
class HeldByPipeWire : public testing::Test {
protected:
    static void SetUpTestSuite() {
        camera = onlyCamera();
        other = std::make_unique<OtherConsumer>();
        ASSERT_TRUE(other->captures());
    }
    static void TearDownTestSuite() {
        other.reset();
        EXPECT_TRUE(comesByV4l2(camera));
    }

    static inline QString camera;
    static inline std::unique_ptr<OtherConsumer> other;
};

TEST_F(HeldByPipeWire, IsCapturedThroughItUnderTheSameIdentifier) {
    KnownCapture capture(camera);
    EXPECT_TRUE(capture.showsIt());
    EXPECT_TRUE(isByPipeWire(camera));
    EXPECT_TRUE(capture.waitForFrames(5));
    EXPECT_EQ(onlyCamera(), camera);
}

TEST_F(HeldByPipeWire, InAnotherModeIsRefusedWithTheOneThatRuns) {
    OVideoMode wish;
    wish.setSize(320, 240);
    EXPECT_TRUE(requestVideoMode(camera, wish));
    const std::string refused = refusal(camera);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "(/dev/video0) is in use by another program", refused);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "; and by another way: ", refused);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "(PipeWire) runs for another program as ", refused);
    EXPECT_TRUE(requestVideoMode(camera, OVideoMode()));
}

TEST_F(HeldByPipeWire, WithoutASessionManagerIsRefusedWithThat) {
    const pid_t manager = QString::fromLatin1(std::getenv("SESSION_MANAGER")).toInt();
    ASSERT_EQ(::kill(manager, SIGSTOP), 0);
    const std::string refused = refusal(camera);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "(/dev/video0) is in use by another program", refused);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, "; and by another way: PipeWire has ", refused);
    EXPECT_PRED_FORMAT2(testing::IsSubstring, " open, but nobody connects this program with it", refused);
    EXPECT_EQ(::kill(manager, SIGCONT), 0);
}

// Of the webcam.
TEST_F(HeldByPipeWire, UnpluggedItEndsAndPluggedInAgainItIsTheSameCamera) {
    OVideoDeviceMonitor monitor;
    const auto becomes = [&](const QStringList& wanted) {
        return waitUntil([&] {
            monitor.wait(1000);
            monitor.take();
            return monitor.cameras().keys() == wanted;
        });
    };
    {
        KnownCapture capture(camera);
        ASSERT_TRUE(capture.showsIt());
        ASSERT_TRUE(isByPipeWire(camera));
        cameraShell("tell_webcam unplug");
        EXPECT_TRUE(capture.waitForEnd());
        EXPECT_TRUE(becomes(QStringList()));
        EXPECT_TRUE(waitUntil([] { return OVideoPipeWire().cameras() == 0; }));
    }
    cameraShell("tell_webcam plug");
    EXPECT_TRUE(becomes(QStringList(camera)));
    EXPECT_TRUE(waitUntil([] { return OVideoPipeWire().cameras() == 1; }));
}
