// A V4L2 camera with which nothing is wrong.
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <atomic>
#include <new>
#include <thread>

namespace ostrel::tests {

TEST_F(V4l2CameraTest, DeliversWhatTheDriverCaptures) {
    start();
    deliver(10);
    EXPECT_EQ(brightness(sink->newest()), 10);
    deliver(200);
    EXPECT_EQ(brightness(sink->newest()), 200);
}

TEST_F(V4l2CameraTest, ScalesToTheSizeThatIsAsked) {
    start(32, 24);
    deliver(77);
    EXPECT_EQ(brightness(sink->newest(), 32, 24), 77);
    EXPECT_EQ(brightness(sink->newest(), 100, 75), 77);
}

TEST_F(V4l2CameraTest, UsesTheKernelInOrderAndGivesEverythingBack) {
    start();
    camera->stop(sink);
    camera->close();
    const std::vector<std::string> expected = {"open",   "REQBUFS 5", "STREAMON", "STREAMOFF",
                                               "munmap", "munmap",    "munmap",   "munmap",
                                               "munmap", "REQBUFS 0", "close"};
    EXPECT_EQ(kernel->journal(), expected);
}

TEST_F(V4l2CameraTest, HoldsABufferOnlyAsLongAsTheFrame) {
    start();
    deliver(1);
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    EXPECT_EQ(kernel->queued(path), 4u);
    sink->drop();
    EXPECT_EQ(kernel->queued(path), 5u);
}

TEST_F(V4l2CameraTest, NeverStarvesTheDriverHoweverManyFramesAreHeld) {
    sink->keepAll = true;
    start();
    for (int i = 0; i < 20; ++i)
        deliver(static_cast<uint8_t>(i));
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    EXPECT_GE(kernel->queued(path), 2u);
    const auto frames = sink->takeAll();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(brightness(frames[static_cast<size_t>(i)]), i);
}

TEST_F(V4l2CameraTest, CapturesWithTwoBuffersWhereTheDriverGrantsNoMore) {
    device.mostBuffers = 2;
    sink->keepAll = true;
    start();
    for (int i = 0; i < 5; ++i)
        deliver(static_cast<uint8_t>(i));
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    EXPECT_GE(kernel->queued(path), 1u);
    EXPECT_EQ(brightness(sink->newest()), 4);
}

TEST_F(V4l2CameraTest, TakesTheNewestAndRequeuesTheRestWhenItFallsBehind) {
    std::mutex gate;
    gate.lock();
    std::atomic<int> calls{0};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        if (calls++ == 0)
            std::lock_guard<std::mutex> wait(gate); // the first call takes long
    };
    start();
    ASSERT_TRUE(kernel->feed(path, grey(1)));
    ASSERT_TRUE(sink->waitForFrames(1));
    for (uint8_t i = 2; i <= 4; ++i)
        ASSERT_TRUE(kernel->feed(path, grey(i)));
    gate.unlock();
    ASSERT_TRUE(sink->waitForFrames(2));
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    EXPECT_EQ(sink->frames(), 2);
    EXPECT_EQ(brightness(sink->newest()), 4);
    EXPECT_EQ(camera->statistics().skipped, 2u);
    EXPECT_EQ(camera->statistics().lost, 0u);
}

TEST_F(V4l2CameraTest, AsksTheDriverOnlyOnceForAFrameThatCanHaveNoSuccessorYet) {
    device.formats.front().intervals = {perSecond(1)}; // young for half a second
    start();
    FrameScript frame = grey(1);
    frame.flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
    const auto callsFor = [&](int64_t microsecondsOld) {
        timespec now = {};
        clock_gettime(CLOCK_MONOTONIC, &now);
        const int64_t when =
            static_cast<int64_t>(now.tv_sec) * 1000000 + now.tv_nsec / 1000 - microsecondsOld;
        frame.time.tv_sec = when / 1000000;
        frame.time.tv_usec = when % 1000000;
        const int before = kernel->calls(VIDIOC_DQBUF);
        EXPECT_TRUE(kernel->feed(path, frame));
        EXPECT_TRUE(kernel->waitUntilIdle(path));
        return kernel->calls(VIDIOC_DQBUF) - before;
    };
    EXPECT_EQ(callsFor(600000), 2);
    EXPECT_EQ(callsFor(-20000000), 2);
    int fewest = 2; // a busy machine may let a frame grow old on its way
    for (int tries = 0; tries < 100 && fewest == 2; ++tries)
        fewest = std::min(fewest, callsFor(0));
    EXPECT_EQ(fewest, 1);
    frame.flags = V4L2_BUF_FLAG_TIMESTAMP_COPY;
    EXPECT_EQ(callsFor(0), 2);
}

TEST_F(V4l2CameraTest, FramesHeldStayReadableAfterStopAndClose) {
    start();
    deliver(123);
    camera->stop(sink);
    EXPECT_EQ(brightness(sink->newest()), 123);
    camera->close();
    EXPECT_EQ(kernel->openDescriptors(), 0);
    EXPECT_EQ(kernel->mappings(), 0);
    EXPECT_EQ(brightness(sink->newest()), 123);
    camera.reset();
    EXPECT_EQ(brightness(sink->newest()), 123);
}

TEST_F(V4l2CameraTest, StopReturnsAlthoughNoFrameComes) {
    start();
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    camera->stop(sink);
    EXPECT_FALSE(kernel->isStreaming(path));
}

TEST_F(V4l2CameraTest, ASecondSinkJoinsTheRunningStream) {
    const auto second = std::make_shared<RecordingSink>();
    start();
    ASSERT_FALSE(camera->start(32, 24, second));
    deliver(9);
    ASSERT_TRUE(second->waitForFrames(1));
    EXPECT_EQ(brightness(second->newest(), 32, 24), 9);
    camera->stop(sink);
    EXPECT_TRUE(kernel->isStreaming(path));
    ASSERT_TRUE(kernel->feed(path, grey(10)));
    ASSERT_TRUE(second->waitForFrames(2));
    EXPECT_EQ(sink->frames(), 1);
    camera->stop(second);
    EXPECT_FALSE(kernel->isStreaming(path));
}

TEST_F(V4l2CameraTest, WithoutMemoryToCallASinkAFrameIsLostAndTheCaptureGoesOn) {
    start();
    const auto poor = std::make_shared<RecordingSink>();
    poor->onFrame = [](const auto&) { throw std::bad_alloc(); };
    ASSERT_FALSE(camera->start(64, 48, poor));
    for (uint8_t number = 1; number <= 20; ++number) { // more than there are buffers
        ASSERT_TRUE(kernel->feed(path, grey(number)));
        ASSERT_TRUE(kernel->waitUntilIdle(path));
    }
    camera->stop(poor);
    deliver(21);
    EXPECT_EQ(brightness(sink->newest()), 21);
}

TEST_F(V4l2CameraTest, CountsWhatWasDeliveredAndTaken) {
    start();
    deliver(1);
    deliver(2);
    brightness(sink->newest());
    brightness(sink->newest());
    deliver(3);
    const cameras::StreamStatistics figures = camera->statistics();
    EXPECT_EQ(figures.delivered, 3u);
    EXPECT_EQ(figures.taken, 1u);
    EXPECT_EQ(figures.granted.format, "GREY");
    EXPECT_EQ(figures.granted.size.width, 64);
    EXPECT_EQ(figures.granted.size.height, 48);
    EXPECT_DOUBLE_EQ(figures.granted.rate(), 30);
    EXPECT_EQ(figures.ended, "");
}

TEST_F(V4l2CameraTest, ConvertsWhileTheStreamStops) {
    for (int round = 0; round < 20; ++round) {
        sink = std::make_shared<RecordingSink>();
        if (round == 0)
            start();
        else
            ASSERT_FALSE(camera->start(64, 48, sink));
        deliver(static_cast<uint8_t>(round));
        std::atomic<bool> go{false};
        std::thread reader([&] {
            const auto frame = sink->newest();
            while (!go)
                std::this_thread::yield();
            for (int i = 0; i < 50; ++i)
                ASSERT_EQ(brightness(frame), round);
        });
        go = true;
        camera->stop(sink);
        reader.join();
    }
}

} // namespace ostrel::tests
