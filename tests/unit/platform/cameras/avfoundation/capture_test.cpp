// From the listing to the client's bytes, with the pictures made as where CoreVideo is the system's.
#include "unit/platform/cameras/avfoundation/fixture.h"

#include <ostrel/camera_state.h>
#include <ostrel/capture.h>
#include <ostrel/devices.h>
#include <ostrel/native_frame.h>
#include <ostrel/next_frame.h>
#include <ostrel/statistics.h>

#include "support/machine.h"
#include "support/stderr_capture.h"

namespace ostrel::tests {

class AvCapture : public AvFoundationTest {
protected:
    AvCapture() {
        device.name = "FaceTime HD Camera";
        device.formats = {format(1280, 720), format(640, 480), format(320, 240)};
        machine.has(provider);
    }
    using Capture = QSharedPointer<OVideoCaptureUnix>;
    static Capture started(int width, int height) {
        const Capture capture = OVideoCaptureUnix::ptr();
        capture->startCapture("A", width, height);
        return capture;
    }
    static bool polled(OVideoCaptureUnix& capture, VideoFrame& frame) {
        return comesTrue([&] {
            frame.data.clear();
            capture.selfVideoFrame(frame);
            return !frame.data.empty();
        });
    }
    void expectFrame(const VideoFrame& frame, int width, int height) const {
        EXPECT_EQ(frame.width, static_cast<uint32_t>(width));
        EXPECT_EQ(frame.height, static_cast<uint32_t>(height));
        EXPECT_TRUE(frame.data == expected(width, height)) << width << 'x' << height;
    }

    support::Machine machine;
    support::StderrCapture err;
};

TEST_F(AvCapture, ListsAndGivesEverySizeExactly) {
    standin::plug(device);
    EXPECT_EQ(videoDevices().size(), 1);
    const int sizes[][2] = {{640, 480}, {320, 240}, {1280, 720}, {642, 362}, {1, 1}};
    for (const auto& size : sizes) {
        const Capture capture = started(size[0], size[1]);
        VideoFrame frame;
        ASSERT_TRUE(polled(*capture, frame));
        expectFrame(frame, size[0], size[1]);
        capture->stopVideoCapture();
    }
}

TEST_F(AvCapture, TwoCapturesShareTheCameraEachInItsSize) {
    standin::plug(device);
    const Capture small = started(320, 240), large = started(1280, 720);
    VideoFrame frame;
    ASSERT_TRUE(polled(*small, frame));
    expectFrame(frame, 320, 240);
    ASSERT_TRUE(polled(*large, frame));
    expectFrame(frame, 1280, 720);
    EXPECT_TRUE(comesTrue([&] {
        OVideoStatistics figures;
        return videoStatistics(QString::fromLatin1("A"), figures) && figures.grantedWidth == 1280;
    }));
}

TEST_F(AvCapture, AFrameCanBeWaitedForAndItsNativePictureHad) {
    device.formats = {format(64, 48)};
    standin::plug(device);
    const Capture capture = started(32, 24);
    OVideoFrameReader reader(capture);
    VideoFrame frame;
    OVideoFrameFacts facts;
    QString why;
    ASSERT_EQ(nextVideoFrame(reader, frame, 60000, &facts, &why), 1) << why.toStdString();
    expectFrame(frame, 32, 24);
    EXPECT_EQ(facts.nativeFormat(), QString::fromLatin1("BGRA"));
    OVideoNativeFrame native;
    ASSERT_EQ(nextNativeFrame(reader, native, 60000, &why), 1) << why.toStdString();
    EXPECT_EQ(native.width(), 64);
    EXPECT_EQ(native.data()[0], device.grey);
}

TEST_F(AvCapture, DeniedPermissionIsTheCamerasReason) {
    standin::plug(device);
    standin::setAuthorization(2);
    const Capture capture = started(320, 240);
    EXPECT_TRUE(comesTrue([] {
        return OVideoCameraState(QString::fromLatin1("A"))
            .whyNoFrames()
            .contains(QString::fromLatin1("System Settings"));
    }));
}

TEST_F(AvCapture, CapturesStartAndStopAtAnyMoment) {
    device.startMilliseconds = 10;
    device.period = 1000000;
    standin::plug(device);
    for (int i = 0; i < 40; ++i) {
        const Capture capture = started(320, 240);
        std::this_thread::sleep_for(std::chrono::milliseconds(i % 4 * 7));
        if (i % 2)
            capture->stopVideoCapture();
    }
}

TEST_F(AvCapture, PluggedInAgainItIsTheSameDeviceToTheClient) {
    standin::plug(device);
    Capture capture = started(320, 240);
    VideoFrame frame;
    ASSERT_TRUE(polled(*capture, frame));
    standin::unplug("A");
    EXPECT_TRUE(comesTrue([] { return videoDevices().isEmpty(); }));
    standin::plug(device);
    EXPECT_EQ(videoDevices().size(), 1);
    capture.clear();
    capture = started(320, 240);
    ASSERT_TRUE(polled(*capture, frame));
}

} // namespace ostrel::tests
