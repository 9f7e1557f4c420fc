// A second capture of a running camera wants more than it has: the mode changes, or all goes on as it was.
#include "unit/platform/cameras/v4l2/faults_fixture.h"

#include "platform/cameras/stall_watch.h"
#include "support/gate.h"

#include <atomic>
#include <cerrno>
#include <thread>
#include <utility>

namespace ostrel::tests {

using cameras::Error;
using cameras::StallWatch;

namespace {

const int64_t SECOND = 1000000000;

class JoiningTest : public FaultsTest {
protected:
    std::shared_ptr<RecordingSink> second = std::make_shared<RecordingSink>();
    const int64_t pause = StallWatch::leastPause;

    JoiningTest() {
        device.formats = {raw(V4L2_PIX_FMT_GREY, {only(64, 48), only(128, 96)})};
        device.period = 1000000;
        device.picture = std::make_shared<std::vector<uint8_t>>(128 * 128, uint8_t(77));
        device.adjust = [](v4l2_pix_format& pix) { pix.sizeimage = 128 * 128; };
    }
    void TearDown() override {
        StallWatch::leastPause = pause;
        if (camera)
            camera->stop(second);
        second->drop();
        FaultsTest::TearDown();
    }
    std::string size() const { return text(camera->statistics().granted.size); }
    static std::string text(const cameras::Size& one) {
        return std::to_string(one.width) + 'x' + std::to_string(one.height);
    }
    int times(const std::string& call) {
        int count = 0;
        for (const std::string& one : kernel->journal())
            count += one == call;
        return count;
    }
    // Both get frames from now on.
    void expectBothGoOn() {
        EXPECT_TRUE(sink->waitForMoreFrames(3));
        EXPECT_TRUE(second->waitForMoreFrames(3));
        EXPECT_EQ(brightness(sink->newest()), 77);
    }
};

} // namespace

TEST_F(JoiningTest, AJoinThatWantsMoreGetsIt) {
    start();
    ASSERT_TRUE(sink->waitForFrames(3));
    const auto held = sink->newest();
    const uint64_t before = camera->statistics().delivered;
    EXPECT_EQ(size(), "64x48");
    ASSERT_EQ(camera->start(128, 96, second).text, "");
    EXPECT_EQ(size(), "128x96");
    EXPECT_EQ(brightness(held), 77) << "what is held stays";
    expectBothGoOn();
    const cameras::StreamStatistics figures = camera->statistics();
    EXPECT_GE(figures.delivered, before + 3) << "the same stream";
    EXPECT_LE(figures.lost, kernel->lost(path)) << "the driver's numbers begin again";
    EXPECT_EQ(figures.shared, "");
    EXPECT_EQ(figures.restarts, 0u);
    camera->stop(second);
    ASSERT_TRUE(sink->waitForMoreFrames(3));
    EXPECT_EQ(size(), "128x96") << "the mode stays while anybody captures";
    EXPECT_EQ(times("STREAMON"), 2);
}

TEST_F(JoiningTest, AJoinFromInsideACallGetsMoreOnceTheCallHasReturned) {
    sink->onFrame = [this, joined = false](const RecordingSink::FramePointer&) mutable {
        if (!std::exchange(joined, true)) {
            EXPECT_EQ(camera->start(128, 96, second).text, "");
        }
    };
    start();
    EXPECT_TRUE(second->waitUntil([&] { return times("STREAMON") == 2; }));
    expectBothGoOn();
    EXPECT_EQ(size(), "128x96");
}

TEST_F(JoiningTest, TheLargestWidthAndTheLargestHeightOfAllCount) {
    device.formats = {raw(V4L2_PIX_FMT_GREY, {only(128, 32), only(32, 128), only(128, 128)})};
    start(128, 32);
    EXPECT_EQ(size(), "128x32");
    ASSERT_EQ(camera->start(32, 128, second).text, "");
    EXPECT_EQ(size(), "128x128");
    expectBothGoOn();
}

TEST_F(JoiningTest, WhatTheDriverWouldNotGrantInterruptsNobody) {
    device.adjust = [](v4l2_pix_format& pix) {
        pix.width = pix.bytesperline = 64;
        pix.height = 48;
        pix.sizeimage = 128 * 128;
    };
    start();
    ASSERT_EQ(camera->start(128, 96, second).text, "");
    expectBothGoOn();
    EXPECT_EQ(times("STREAMOFF"), 0);
    EXPECT_NE(camera->statistics().shared.find("is shared at 64x48"), std::string::npos)
        << camera->statistics().shared;
}

TEST_F(JoiningTest, NoFrameRateIsGivenUpForSize) {
    device.formats = {raw(V4L2_PIX_FMT_GREY, {only(64, 48)}, 30),
                      raw(V4L2_PIX_FMT_YUYV, {only(128, 64)}, 10)};
    start();
    ASSERT_EQ(camera->start(128, 64, second).text, "");
    expectBothGoOn();
    EXPECT_EQ(size(), "64x48");
    EXPECT_EQ(times("STREAMOFF"), 0);
    EXPECT_NE(camera->statistics().shared, "");
}

TEST_F(JoiningTest, RefusedAfterAllTheOldModeComesBackAndThatIsSaid) {
    start();
    kernel->failNext(VIDIOC_S_FMT, EBUSY);
    ASSERT_EQ(camera->start(128, 96, second).text, "");
    expectBothGoOn();
    EXPECT_EQ(size(), "64x48");
    EXPECT_EQ(times("STREAMON"), 2);
    const std::string shared = camera->statistics().shared;
    EXPECT_NE(shared.find("is shared at 64x48"), std::string::npos) << shared;
    EXPECT_NE(shared.find("in use by another program"), std::string::npos) << shared;
    camera->stop(second);
    ASSERT_EQ(camera->start(128, 96, second).text, ""); // free again
    EXPECT_EQ(size(), "128x96");
    EXPECT_EQ(camera->statistics().shared, "");
}

TEST_F(JoiningTest, TheOldModeIsTriedAgainWhenItIsRefusedToo) {
    StallWatch::leastPause = SECOND / 100;
    start();
    kernel->failNext(VIDIOC_S_FMT, EBUSY, 3);
    ASSERT_EQ(camera->start(128, 96, second).text, "");
    expectBothGoOn();
    EXPECT_EQ(size(), "64x48");
    EXPECT_EQ(camera->statistics().restarts, 2u);
}

TEST_F(JoiningTest, RefusedForGoodTheStreamEndsWithTheReason) {
    StallWatch::leastPause = SECOND / 100;
    start();
    kernel->failNext(VIDIOC_S_FMT, EBUSY, FOREVER);
    ASSERT_EQ(camera->start(128, 96, second).text, "");
    expectEnd("in use by another program");
    EXPECT_EQ(camera->statistics().restarts, 3u);
    EXPECT_TRUE(second->waitForEnd());
}

TEST_F(JoiningTest, AStopOfTheOneWhoJoinsNeedNotWaitForTheHardware) {
    start();
    ASSERT_TRUE(sink->waitForFrames(1));
    const auto gate = kernel->hold(path, VIDIOC_STREAMOFF);
    std::thread joiner([&] { EXPECT_EQ(camera->start(128, 96, second).text, ""); });
    gate->awaitArrivals(1);
    camera->stop(second);
    joiner.join(); // would hang here
    gate->open();
}

TEST_F(JoiningTest, ACloseEndsTheWaitForAModeThatIsTriedAgainAndAgain) {
    StallWatch::leastPause = 400 * SECOND;
    start();
    kernel->failNext(VIDIOC_S_FMT, EBUSY, 2);
    std::thread joiner([&] { EXPECT_EQ(camera->start(128, 96, second).text, ""); });
    while (kernel->calls(VIDIOC_S_FMT) < 3)
        std::this_thread::yield();
    camera->close(); // would take minutes
    joiner.join();
    EXPECT_EQ(kernel->openDescriptors(), 0);
}

TEST_F(JoiningTest, AStalledCameraIsStartedAgain) {
    StallWatch::leastPause = SECOND / 2;
    start();
    ASSERT_TRUE(sink->waitForFrames(3));
    kernel->stall(path);
    ASSERT_TRUE(sink->waitForMoreFrames(3 + 5)); // five buffers may have been full
    EXPECT_TRUE(sink->waitUntil([&] { return camera->statistics().restarts == 1; }));
    ASSERT_TRUE(sink->waitForMoreFrames(1));
    EXPECT_EQ(times("STREAMON"), 2);
    EXPECT_EQ(camera->statistics().stalled, "");
    EXPECT_TRUE(sink->ends().empty());
}

// Told by one thread of the end, a sink stops the camera while the delivery thread has come to an end itself.
TEST_F(JoiningTest, UnpluggedWhileTheDriverGivesUpAStopFromTheEndDoesNotHang) {
    for (int round = 0; round < 20; ++round) {
        sink = std::make_shared<RecordingSink>();
        plug();
        ASSERT_FALSE(camera->open());
        const auto gate = kernel->hold(path, VIDIOC_STREAMOFF);
        sink->onEnd = [&] {
            gate->open();
            while (kernel->mappings() > 0)
                std::this_thread::yield();
            camera->stop(sink);
        };
        ASSERT_FALSE(camera->start(64, 48, sink));
        kernel->failNext(VIDIOC_DQBUF, EIO, 10);
        gate->awaitArrivals(1);
        std::static_pointer_cast<cameras::StreamingCamera>(camera)->unplug();
        EXPECT_EQ(sink->ends().size(), 1u);
        camera->close();
    }
}

TEST_F(JoiningTest, AStartThatIsUnpluggedMeanwhileReturnsWhenTheSinkHasHeard) {
    plug();
    ASSERT_FALSE(camera->open());
    const auto gate = kernel->hold(path, VIDIOC_STREAMON);
    std::atomic<bool> heard{false};
    Gate hearing;
    hearing.shut();
    sink->onEnd = [&] {
        hearing.pass();
        heard = true;
    };
    std::thread starter([&] {
        EXPECT_EQ(camera->start(64, 48, sink).code, ENODEV);
        EXPECT_TRUE(heard);
    });
    gate->awaitArrivals(1);
    std::thread unplugger([&] { std::static_pointer_cast<cameras::StreamingCamera>(camera)->unplug(); });
    hearing.awaitArrivals(1);
    gate->open();
    while (kernel->calls(VIDIOC_STREAMOFF) < 1) // the start has given up
        std::this_thread::yield();
    hearing.open();
    starter.join();
    unplugger.join();
}

} // namespace ostrel::tests
