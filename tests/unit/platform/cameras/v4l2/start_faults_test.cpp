// Cameras that cannot be opened or started: said in words, with nothing left behind.
#include "unit/platform/cameras/v4l2/faults_fixture.h"

#include <cerrno>
#include <memory>

namespace ostrel::tests {

using cameras::Error;

TEST_F(FaultsTest, ABusyCameraIsInUse) {
    for (const unsigned long call : {VIDIOC_S_FMT, VIDIOC_REQBUFS, VIDIOC_STREAMON}) {
        kernel->failNext(call, EBUSY);
        const Error error = startFails();
        EXPECT_EQ(error.code, EBUSY);
        EXPECT_TRUE(says(error, "HD Webcam (/dev/video0) is in use by another program")) << error.text;
        expectHealthy();
        camera->stop(sink);
        camera->close();
    }
}

TEST_F(FaultsTest, ASecondOpenerFindsItInUse) {
    start();
    const auto other =
        cameras::v4l2::makeCamera(kernel, discovery, discovery->nodes().back(), "identifier", "HD Webcam");
    ASSERT_FALSE(other->open());
    const auto second = std::make_shared<RecordingSink>();
    EXPECT_EQ(other->start(64, 48, second).code, EBUSY);
    other->close();
    deliver(3); // the first is not disturbed
}

TEST_F(FaultsTest, TooLittleUsbBandwidthIsSaidWithAWayOut) {
    kernel->failNext(VIDIOC_STREAMON, ENOSPC);
    const Error error = startFails();
    EXPECT_EQ(error.code, ENOSPC);
    EXPECT_TRUE(says(error, "USB bandwidth")) << error.text;
    EXPECT_TRUE(says(error, "64x48")) << error.text;
    EXPECT_TRUE(says(error, "smaller size")) << error.text;
    expectHealthy();
}

TEST_F(FaultsTest, TheNextBestModeIsTakenWhereTheBusHasNoRoomForTheBest) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(64, 48)}), raw(V4L2_PIX_FMT_GREY, {only(64, 48)})};
    device.bandwidth = [](const v4l2_pix_format& format) { return format.pixelformat == V4L2_PIX_FMT_GREY; };
    start();
    EXPECT_EQ(camera->statistics().granted.format, "GREY");
    EXPECT_EQ(kernel->calls(VIDIOC_STREAMON), 2);
    EXPECT_EQ(static_cast<unsigned>(kernel->mappings()), kernel->buffers(path))
        << "those of the first are freed";
    deliver(9);
    EXPECT_EQ(brightness(sink->newest()), 9);
}

TEST_F(FaultsTest, WhatAnotherModeMayEscapeIsTriedAgainAndTheReasonNamesAllThatWasTried) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(64, 48)}), raw(V4L2_PIX_FMT_GREY, {only(64, 48)})};
    for (const int number : {ENOSPC, EIO, ENOMEM, EINVAL}) {
        kernel->failNext(VIDIOC_STREAMON, number, 2);
        const Error error = startFails();
        EXPECT_EQ(error.code, number);
        EXPECT_TRUE(says(error, "YUYV 64x48")) << error.text;
        EXPECT_TRUE(says(error, "GREY 64x48")) << error.text;
        camera->close();
    }
    kernel->failNext(VIDIOC_STREAMON, EBUSY); // no other mode would fare better
    EXPECT_EQ(startFails().code, EBUSY);
    EXPECT_EQ(kernel->calls(VIDIOC_STREAMON), 4 * 2 + 1);
}

TEST_F(FaultsTest, MissingPermissionNamesTheDeviceAndTheGroup) {
    plug();
    kernel->failNext(OPEN, EACCES);
    const Error error = camera->open();
    EXPECT_EQ(error.code, EACCES);
    EXPECT_TRUE(says(error, "/dev/video0")) << error.text;
    EXPECT_TRUE(says(error, "group \"video\"")) << error.text;
    EXPECT_TRUE(camera->attached());
}

TEST_F(FaultsTest, ADeviceThatTheContainerMayNotUseIsNoMatterOfGroups) {
    plug();
    kernel->failNext(OPEN, EPERM);
    const Error error = camera->open();
    EXPECT_EQ(error.code, EPERM);
    EXPECT_TRUE(says(error, "/dev/video0")) << error.text;
    EXPECT_TRUE(says(error, "--device")) << error.text;
    EXPECT_FALSE(says(error, "group")) << error.text;
    EXPECT_TRUE(camera->attached());
}

TEST_F(FaultsTest, ANodeThatVanishedIsUnplugged) {
    for (const int number : {ENOENT, ENODEV, ENXIO}) {
        plug();
        kernel->failNext(OPEN, number);
        const Error error = camera->open();
        EXPECT_TRUE(says(error, "was unplugged")) << error.text;
        EXPECT_FALSE(camera->attached());
    }
}

TEST_F(FaultsTest, OtherFailuresNameTheStepAndTheReason) {
    kernel->failNext(VIDIOC_STREAMON, EPROTO);
    const Error error = startFails();
    EXPECT_EQ(error.code, EPROTO);
    EXPECT_TRUE(says(error, "VIDIOC_STREAMON")) << error.text;
    EXPECT_TRUE(says(error, "Protocol error")) << error.text;
}

TEST_F(FaultsTest, AFailureAtAnyStepOfTheStartGivesEverythingBack) {
    struct Step {
        unsigned long call;
        int number, after;
    };
    const Step steps[] = {{VIDIOC_S_FMT, EIO, 0}, {VIDIOC_REQBUFS, ENOMEM, 0}, {VIDIOC_QUERYBUF, EIO, 2},
                          {MMAP, ENOMEM, 0},      {MMAP, ENOMEM, 3},           {VIDIOC_QBUF, EIO, 0},
                          {VIDIOC_QBUF, EIO, 4},  {VIDIOC_STREAMON, EIO, 0}};
    for (const Step& step : steps) {
        kernel->failNext(step.call, step.number, 1, step.after);
        EXPECT_EQ(startFails().code, step.number);
        expectHealthy();
        camera->stop(sink);
        camera->close();
        EXPECT_EQ(kernel->openDescriptors(), 0);
        EXPECT_EQ(kernel->mappings(), 0);
    }
}

TEST_F(FaultsTest, OneBufferIsTooFew) {
    device.mostBuffers = 1;
    EXPECT_EQ(startFails().code, ENOMEM);
}

} // namespace ostrel::tests
