// Everything that goes wrong in the field, at the line of the system calls.
#include "unit/cameras/jpeg_pictures.h"
#include "unit/v4l2/camera_fixture.h"

#include <algorithm>
#include <atomic>
#include <poll.h>
#include <thread>

namespace ostrel {
namespace tests {

using cameras::Error;

namespace {

bool says(const Error& error, const std::string& text) {
    return error.text.find(text) != std::string::npos;
}

} // namespace

class FaultsTest : public V4l2CameraTest {
protected:
    // A frame that must not reach the sink; the next one must.
    void expectDropped(const FakeFrame& broken, const std::string& reason) {
        deliver(1);
        ASSERT_TRUE(kernel->feed(path, broken));
        ASSERT_TRUE(kernel->waitUntilIdle(path));
        EXPECT_EQ(sink->frames(), 1);
        EXPECT_EQ(brightness(sink->newest()), 1);
        EXPECT_EQ(camera->statistics().dropped[reason], 1u);
        sink->drop();
        EXPECT_EQ(kernel->queued(path), kernel->buffers(path)); // requeued
        deliver(2);
    }
    void expectEnd(const std::string& text) {
        ASSERT_TRUE(sink->waitForEnd());
        EXPECT_TRUE(says(sink->why(), text)) << sink->why().text;
        EXPECT_TRUE(says(sink->why(), "HD Webcam (/dev/video0)")) << sink->why().text;
        EXPECT_EQ(camera->statistics().ended, sink->why().text);
        EXPECT_EQ(sink->ends(), 1);
    }
    Error startFails() {
        plug();
        const Error opened = camera->open();
        EXPECT_FALSE(opened) << opened.text;
        const Error error = camera->start(64, 48, sink);
        EXPECT_TRUE(error);
        EXPECT_EQ(kernel->mappings(), 0);
        return error;
    }
    // A failed start leaves nothing behind: the next one works.
    void expectHealthy() {
        ASSERT_FALSE(camera->start(64, 48, sink));
        deliver(42);
        EXPECT_EQ(brightness(sink->newest()), 42);
    }
};

TEST_F(FaultsTest, AFrameThatTheDriverCallsDamagedIsDroppedCountedAndRequeued) {
    start();
    FakeFrame frame = grey(9);
    frame.flags = V4L2_BUF_FLAG_ERROR;
    expectDropped(frame, "damaged");
}

TEST_F(FaultsTest, ARawFrameWithTooFewBytesIsDroppedCountedAndRequeued) {
    start();
    FakeFrame frame = grey(9);
    frame.bytesUsed = 64 * 48 - 1;
    expectDropped(frame, "truncated");
}

TEST_F(FaultsTest, AFrameWithoutBytesIsDroppedCountedAndRequeued) {
    start();
    FakeFrame frame = grey(9);
    frame.bytesUsed = 0;
    expectDropped(frame, "empty");
}

TEST_F(FaultsTest, MoreBytesThanTheBufferHasAreNotRead) {
    start();
    FakeFrame frame = grey(9);
    frame.bytesUsed = 1 << 30;
    ASSERT_TRUE(kernel->feed(path, frame));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(brightness(sink->newest()), 9);
}

class JpegFaultsTest : public FaultsTest {
protected:
    JpegFaultsTest() { device.formats = {raw(V4L2_PIX_FMT_MJPEG, {only(96, 64)})}; }

    FakeFrame whole = frameOf(quadrantsAsJpeg(96, 64));
    std::vector<uint8_t> pixels = std::vector<uint8_t>(96 * 64 * 4);

    static FakeFrame frameOf(std::vector<uint8_t> bytes) {
        FakeFrame frame;
        frame.bytes = std::move(bytes);
        return frame;
    }
    bool readable() {
        const auto frame = sink->newest();
        if (!frame || !frame->convert(pixels.data(), 96, 64, 96 * 4))
            return false;
        for (int c = 0; c < 3; ++c)
            EXPECT_NEAR(pixels[static_cast<size_t>((16 * 96 + 24) * 4 + c)], kJpegQuadrants[0][c], 5);
        return true;
    }
    void expectDroppedJpeg(const FakeFrame& broken, const std::string& reason) {
        start(96, 64);
        ASSERT_TRUE(kernel->feed(path, whole));
        ASSERT_TRUE(sink->waitForFrames(1));
        ASSERT_TRUE(kernel->feed(path, broken));
        ASSERT_TRUE(kernel->waitUntilIdle(path));
        EXPECT_EQ(sink->frames(), 1);
        EXPECT_TRUE(readable()); // the frame before
        EXPECT_EQ(camera->statistics().dropped[reason], 1u);
        sink->drop();
        EXPECT_EQ(kernel->queued(path), kernel->buffers(path));
    }
};

TEST_F(JpegFaultsTest, WholePicturesAreDelivered) {
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, ExtraBytesBehindThePictureAreNormal) {
    whole.bytes.resize(whole.bytes.size() + 2000, 0);
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, ATruncatedPictureIsDropped) {
    FakeFrame cut = whole;
    cut.bytes.resize(cut.bytes.size() - 20);
    expectDroppedJpeg(cut, "truncated");
}

TEST_F(JpegFaultsTest, AnEmptyPictureIsDropped) {
    FakeFrame empty = whole;
    empty.bytesUsed = 0;
    expectDroppedJpeg(empty, "empty");
}

TEST_F(JpegFaultsTest, APictureWithoutItsStartIsDropped) {
    expectDroppedJpeg(frameOf(std::vector<uint8_t>(whole.bytes.begin() + 2, whole.bytes.end())),
                      "not a JPEG picture");
}

TEST_F(JpegFaultsTest, APictureOfTheSizeBeforeIsDropped) {
    expectDroppedJpeg(frameOf(quadrantsAsJpeg(64, 64)), "wrong size");
}

TEST_F(JpegFaultsTest, ABrokenFirstPictureIsPassedOver) {
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, frameOf({0, 0, 0})));
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(readable());
}

TEST_F(JpegFaultsTest, APictureThatTurnsOutBrokenWhenItIsDecodedIsCountedThen) {
    // Half of its data is missing, but its ends and headers are in order.
    const uint8_t startOfScan[] = {0xFF, 0xDA}, endOfPicture[] = {0xFF, 0xD9};
    const auto scan = std::search(whole.bytes.begin(), whole.bytes.end(), startOfScan, startOfScan + 2);
    FakeFrame broken = frameOf({whole.bytes.begin(), scan + (whole.bytes.end() - scan) / 2});
    broken.bytes.insert(broken.bytes.end(), endOfPicture, endOfPicture + 2);
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, broken));
    ASSERT_TRUE(sink->waitForFrames(1));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(readable());
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(camera->statistics().dropped["undecodable"], 1u);
    EXPECT_EQ(camera->statistics().taken, 0u);
}

TEST_F(JpegFaultsTest, HeldPicturesStayReadableAfterTheStop) {
    start(96, 64);
    ASSERT_TRUE(kernel->feed(path, whole));
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    camera->close();
    EXPECT_TRUE(readable());
}

TEST_F(FaultsTest, InterruptedCallsAreMadeAgain) {
    for (const unsigned long call :
         {kOpen, kMmap, kMunmap, kClose, static_cast<unsigned long>(VIDIOC_QUERYCAP),
          static_cast<unsigned long>(VIDIOC_ENUM_FMT), static_cast<unsigned long>(VIDIOC_ENUM_FRAMESIZES),
          static_cast<unsigned long>(VIDIOC_ENUM_FRAMEINTERVALS), static_cast<unsigned long>(VIDIOC_S_FMT),
          static_cast<unsigned long>(VIDIOC_G_PARM), static_cast<unsigned long>(VIDIOC_S_PARM),
          static_cast<unsigned long>(VIDIOC_REQBUFS), static_cast<unsigned long>(VIDIOC_QUERYBUF),
          static_cast<unsigned long>(VIDIOC_QBUF), static_cast<unsigned long>(VIDIOC_DQBUF),
          static_cast<unsigned long>(VIDIOC_STREAMON), static_cast<unsigned long>(VIDIOC_STREAMOFF), kPoll})
        kernel->failNext(call, EINTR, 3);
    start();
    deliver(5);
    EXPECT_EQ(brightness(sink->newest()), 5);
    camera->stop(sink);
    camera->close();
    EXPECT_EQ(sink->ends(), 0);
}

TEST_F(FaultsTest, NoFrameAfterPollIsNoFault) {
    start();
    kernel->failNext(VIDIOC_DQBUF, EAGAIN, 3);
    deliver(5);
    EXPECT_EQ(sink->ends(), 0);
}

TEST_F(FaultsTest, AFailedDequeueIsSkipped) {
    start();
    kernel->failNext(VIDIOC_DQBUF, EIO, 5);
    deliver(5);
    EXPECT_EQ(sink->ends(), 0);
    kernel->failNext(VIDIOC_DQBUF, EIO, 5); // counted anew after each success
    deliver(6);
    kernel->failNext(VIDIOC_DQBUF, EIO, 5);
    deliver(7);
    EXPECT_EQ(sink->ends(), 0);
}

TEST_F(FaultsTest, ARunOfFailedDequeuesEndsTheStream) {
    start();
    deliver(5);
    kernel->failNext(VIDIOC_DQBUF, EIO, 1000000);
    ASSERT_TRUE(kernel->feed(path, grey(6)));
    expectEnd("stopped delivering frames");
    EXPECT_LT(kernel->calls(VIDIOC_DQBUF), 100); // no spin
    EXPECT_EQ(brightness(sink->newest()), 5);
    EXPECT_EQ(kernel->mappings(), 0); // given back without waiting for the stop
    EXPECT_TRUE(camera->attached());
}

TEST_F(FaultsTest, ADriverThatGaveUpCanBeStartedAgain) {
    start();
    kernel->failNext(VIDIOC_DQBUF, EIO, 50);
    ASSERT_TRUE(kernel->feed(path, grey(6)));
    expectEnd("stopped delivering frames");
    kernel->failNext(VIDIOC_DQBUF, EAGAIN); // pushes the rest of the script aside
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->start(64, 48, second));
    camera->stop(sink); // of the stream before: does not touch the new one
    EXPECT_TRUE(kernel->isStreaming(path));
    camera->stop(second);
}

TEST_F(FaultsTest, APollErrorEndsTheStreamWithoutASpin) {
    start();
    deliver(5);
    kernel->setPollEvents(path, POLLERR);
    expectEnd("stopped delivering frames");
    EXPECT_LT(kernel->calls(kPoll), 100);
    EXPECT_EQ(brightness(sink->newest()), 5);
}

TEST_F(FaultsTest, AFailedPollEndsTheStream) {
    start();
    kernel->failNext(kPoll, ENOMEM);
    ASSERT_TRUE(kernel->feed(path, grey(6)));
    expectEnd("stopped delivering frames");
}

class UnplugTest : public FaultsTest, public testing::WithParamInterface<int> {
protected:
    UnplugTest() { device.unpluggedDequeue = GetParam(); }
};

TEST_P(UnplugTest, EndsTheStreamAndKeepsTheLastFrame) {
    start();
    deliver(77);
    unplug();
    expectEnd("was unplugged");
    EXPECT_EQ(sink->why().code, ENODEV);
    EXPECT_FALSE(camera->attached());
    EXPECT_EQ(brightness(sink->newest()), 77);
    EXPECT_LT(kernel->calls(kPoll), 100);
    EXPECT_EQ(kernel->mappings(), 0);
    camera->stop(sink);
    camera->close();
    EXPECT_EQ(kernel->openDescriptors(), 0);
    EXPECT_EQ(brightness(sink->newest()), 77);
    EXPECT_EQ(camera->open().code, ENODEV);
}

TEST_P(UnplugTest, WhileFramesAreHeldAndDroppedElsewhere) {
    sink->keepAll = true;
    start();
    for (int i = 0; i < 3; ++i)
        deliver(static_cast<uint8_t>(i));
    std::thread dropper([&] { sink->takeAll(); });
    unplug();
    expectEnd("was unplugged");
    dropper.join();
}

TEST_P(UnplugTest, StopAtTheSameMomentDoesNotHang) {
    for (int round = 0; round < 20; ++round) {
        sink = std::make_shared<RecordingSink>();
        start();
        deliver(1);
        std::thread stopper([&] { camera->stop(sink); });
        unplug();
        stopper.join();
        camera->close();
        EXPECT_FALSE(camera->attached());
    }
}

TEST_P(UnplugTest, PluggedInAgainItIsACameraLikeNew) {
    start();
    unplug();
    expectEnd("was unplugged");
    camera->close();
    sink = std::make_shared<RecordingSink>();
    start(); // a new object at the same node
    deliver(8);
    EXPECT_EQ(brightness(sink->newest()), 8);
}

TEST_P(UnplugTest, TheSinkMayCloseTheCameraWhenItHears) {
    sink->onEnd = [this] {
        camera->stop(sink);
        camera->close();
    };
    start();
    unplug();
    ASSERT_TRUE(sink->waitForEnd());
    camera->stop(sink); // waits for that call
    EXPECT_EQ(kernel->openDescriptors(), 0);
}

INSTANTIATE_TEST_SUITE_P(DequeueAnswers, UnplugTest, testing::Values(ENODEV, EINVAL, EIO));

TEST_F(FaultsTest, ADeviceThatVanishesWithoutAnyEventIsNoticed) {
    start();
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    kernel->failNext(VIDIOC_QUERYCAP, ENODEV, 1000); // and poll() just runs out of time
    expectEnd("was unplugged");
    EXPECT_FALSE(camera->attached());
}

TEST_F(FaultsTest, UnpluggedBeforeTheStart) {
    plug();
    ASSERT_FALSE(camera->open());
    unplug();
    const Error error = camera->start(64, 48, sink);
    EXPECT_EQ(error.code, ENODEV);
    EXPECT_TRUE(says(error, "was unplugged")) << error.text;
    EXPECT_FALSE(camera->attached());
}

TEST_F(FaultsTest, StopNeverWaitsForAFrame) {
    start();
    ASSERT_TRUE(kernel->waitUntilIdle(path)); // inside poll(), and no frame will come
    const auto before = std::chrono::steady_clock::now();
    camera->stop(sink);
    // The bound of poll() is a second: a stop that waited for it would show, on the busiest machine.
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(900));
    EXPECT_EQ(kernel->journal().back(), "REQBUFS 0");
}

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
    cameras::v4l2::V4l2Camera other(kernel, discovery, discovery->nodes().back(), "identifier", "HD Webcam");
    ASSERT_FALSE(other.open());
    const auto second = std::make_shared<RecordingSink>();
    EXPECT_EQ(other.start(64, 48, second).code, EBUSY);
    other.close();
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

TEST_F(FaultsTest, MissingPermissionNamesTheDeviceAndTheGroup) {
    for (const int number : {EACCES, EPERM}) {
        plug();
        kernel->failNext(kOpen, number);
        const Error error = camera->open();
        EXPECT_EQ(error.code, number);
        EXPECT_TRUE(says(error, "/dev/video0")) << error.text;
        EXPECT_TRUE(says(error, "group \"video\"")) << error.text;
        EXPECT_TRUE(camera->attached());
    }
}

TEST_F(FaultsTest, ANodeThatVanishedIsUnplugged) {
    for (const int number : {ENOENT, ENODEV, ENXIO}) {
        plug();
        kernel->failNext(kOpen, number);
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
    const Step steps[] = {{VIDIOC_QUERYCAP, EIO, 1}, {VIDIOC_S_FMT, EIO, 0}, {VIDIOC_REQBUFS, ENOMEM, 0},
                          {VIDIOC_QUERYBUF, EIO, 2}, {kMmap, ENOMEM, 0},     {kMmap, ENOMEM, 3},
                          {VIDIOC_QBUF, EIO, 0},     {VIDIOC_QBUF, EIO, 4},  {VIDIOC_STREAMON, EIO, 0}};
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

TEST_F(FaultsTest, AnIndexOutOfRangeIsIgnored) {
    start();
    deliver(1);
    for (const int index : {7, 1 << 30}) {
        FakeFrame frame = grey(2);
        frame.index = index;
        ASSERT_TRUE(kernel->feed(path, frame));
    }
    deliver(3);
    EXPECT_EQ(brightness(sink->newest()), 3);
    EXPECT_EQ(camera->statistics().dropped["unknown buffer"], 2u);
    EXPECT_EQ(sink->ends(), 0);
}

TEST_F(FaultsTest, OneBufferIsTooFew) {
    device.mostBuffers = 1;
    EXPECT_EQ(startFails().code, ENOMEM);
}

TEST_F(FaultsTest, ARefusedRequeueIsTriedAgain) {
    start();
    deliver(1);
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    kernel->failNext(VIDIOC_QBUF, EIO);
    sink->drop();
    EXPECT_EQ(kernel->queued(path), 4u);
    deliver(2);
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    sink->drop();
    EXPECT_EQ(kernel->queued(path), 5u);
}

TEST_F(FaultsTest, ADriverThatTakesNoBufferBackEndsTheStream) {
    start();
    kernel->failNext(VIDIOC_QBUF, EIO, 1000000);
    for (uint8_t i = 0; i < 5; ++i)
        deliver(i);
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_LT(kernel->calls(VIDIOC_QBUF), 200);
}

TEST_F(FaultsTest, AGapInTheSequenceCountsAsLostFrames) {
    start();
    const auto numbered = [&](int sequence) {
        FakeFrame frame = grey(1);
        frame.sequence = sequence;
        const int before = sink->frames();
        ASSERT_TRUE(kernel->feed(path, frame));
        ASSERT_TRUE(sink->waitForFrames(before + 1));
    };
    numbered(1000); // where it starts does not matter
    EXPECT_EQ(camera->statistics().lost, 0u);
    numbered(1001);
    EXPECT_EQ(camera->statistics().lost, 0u);
    numbered(1005);
    EXPECT_EQ(camera->statistics().lost, 3u);
    numbered(2); // begins again
    EXPECT_EQ(camera->statistics().lost, 3u);
    numbered(2); // or stands still
    EXPECT_EQ(camera->statistics().lost, 3u);
    numbered(4);
    EXPECT_EQ(camera->statistics().lost, 4u);
    EXPECT_EQ(sink->ends(), 0);
}

TEST_F(FaultsTest, TheFrameLastHandedOutBecomesMemoryOfItsOwnBeforeTheDriversIsUnmapped) {
    start();
    deliver(91);
    const auto frame = sink->newest();
    camera->stop(sink);
    EXPECT_EQ(kernel->mappings(), 0); // reading them now would crash
    EXPECT_EQ(brightness(frame), 91);
}

} // namespace tests
} // namespace ostrel
