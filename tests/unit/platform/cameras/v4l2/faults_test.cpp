// What goes wrong while a stream runs, at the line of the system calls.
#include "unit/platform/cameras/v4l2/faults_fixture.h"

#include <cerrno>
#include <chrono>
#include <memory>
#include <poll.h>

namespace ostrel::tests {

TEST_F(FaultsTest, InterruptedCallsAreMadeAgain) {
    for (const unsigned long call :
         {OPEN, MMAP, MUNMAP, CLOSE, static_cast<unsigned long>(VIDIOC_QUERYCAP),
          static_cast<unsigned long>(VIDIOC_ENUM_FMT), static_cast<unsigned long>(VIDIOC_ENUM_FRAMESIZES),
          static_cast<unsigned long>(VIDIOC_ENUM_FRAMEINTERVALS), static_cast<unsigned long>(VIDIOC_S_FMT),
          static_cast<unsigned long>(VIDIOC_G_PARM), static_cast<unsigned long>(VIDIOC_S_PARM),
          static_cast<unsigned long>(VIDIOC_REQBUFS), static_cast<unsigned long>(VIDIOC_QUERYBUF),
          static_cast<unsigned long>(VIDIOC_QBUF), static_cast<unsigned long>(VIDIOC_DQBUF),
          static_cast<unsigned long>(VIDIOC_STREAMON), static_cast<unsigned long>(VIDIOC_STREAMOFF), POLL})
        kernel->failNext(call, EINTR, 3);
    start();
    deliver(5);
    EXPECT_EQ(brightness(sink->newest()), 5);
    camera->stop(sink);
    camera->close();
    EXPECT_EQ(sink->ends().size(), 0u);
}

TEST_F(FaultsTest, NoFrameAfterPollIsNoFault) {
    start();
    kernel->failNext(VIDIOC_DQBUF, EAGAIN, 3);
    deliver(5);
    EXPECT_EQ(sink->ends().size(), 0u);
}

TEST_F(FaultsTest, AFailedDequeueIsSkipped) {
    start();
    kernel->failNext(VIDIOC_DQBUF, EIO, 5);
    deliver(5);
    EXPECT_EQ(sink->ends().size(), 0u);
    kernel->failNext(VIDIOC_DQBUF, EIO, 5); // counted anew after each success
    deliver(6);
    kernel->failNext(VIDIOC_DQBUF, EIO, 5);
    deliver(7);
    EXPECT_EQ(sink->ends().size(), 0u);
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
    EXPECT_LT(kernel->calls(POLL), 100);
    EXPECT_EQ(brightness(sink->newest()), 5);
}

TEST_F(FaultsTest, AFailedPollEndsTheStream) {
    start();
    ASSERT_TRUE(kernel->waitUntilIdle(path)); // inside a poll(), which the frame ends: the next one fails
    kernel->failNext(POLL, ENOMEM);
    ASSERT_TRUE(kernel->feed(path, grey(6)));
    expectEnd("stopped delivering frames");
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

TEST_F(FaultsTest, AnIndexOutOfRangeIsIgnored) {
    start();
    deliver(1);
    for (const int index : {7, 1 << 30}) {
        FrameScript frame = grey(2);
        frame.index = index;
        ASSERT_TRUE(kernel->feed(path, frame));
    }
    deliver(3);
    EXPECT_EQ(brightness(sink->newest()), 3);
    EXPECT_EQ(camera->statistics().dropped["unknown buffer"], 2u);
    EXPECT_EQ(sink->ends().size(), 0u);
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
        FrameScript frame = grey(1);
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
    EXPECT_EQ(sink->ends().size(), 0u);
}

TEST_F(FaultsTest, TheFrameLastHandedOutBecomesMemoryOfItsOwnBeforeTheDriversIsUnmapped) {
    start();
    deliver(91);
    const auto frame = sink->newest();
    camera->stop(sink);
    EXPECT_EQ(kernel->mappings(), 0); // reading them now would crash
    EXPECT_EQ(brightness(frame), 91);
}

} // namespace ostrel::tests
