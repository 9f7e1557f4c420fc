// Several sinks, stopping from anywhere, closing under way.
#include "capture_fixture.h"

#include <filesystem>
#include <fstream>

using namespace ostrel;

namespace {

class Stream : public PatternFixture {};

// Waits for it, as a thread that was joined is still listed for a moment.
bool becomesTheNumberOfDeliveryThreads(int expected) {
    const auto limit = std::chrono::steady_clock::now() + support::HANG;
    for (int count = -1; count != expected;) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        count = 0;
        for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
            std::string name;
            std::getline(std::ifstream(task.path() / "comm"), name);
            count += name == "ostrel-virtual";
        }
    }
    return true;
}

TEST_F(Stream, ASecondSinkJoinsAndBothGetTheSameFrames) {
    auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(3));
    ASSERT_FALSE(camera->start(640, 480, second));
    ASSERT_TRUE(second->waitForFrames(3));
    EXPECT_GT(read(second->newest()).counter, 3u) << "the running stream, not one of its own";
    camera->stop(second);
    const int stopped = second->frames();
    ASSERT_TRUE(sink->waitForMoreFrames(10));
    EXPECT_EQ(stopped, second->frames());
    camera->stop(sink);
}

TEST_F(Stream, NothingArrivesAfterStopReturns) {
    for (int i = 0; i < 50; ++i) {
        auto fresh = std::make_shared<RecordingSink>();
        ASSERT_FALSE(camera->start(WIDTH, HEIGHT, fresh));
        if (i % 2) {
            ASSERT_TRUE(fresh->waitForFrames(1));
        }
        camera->stop(fresh);
        const int arrived = fresh->frames();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        ASSERT_EQ(arrived, fresh->frames());
    }
}

TEST_F(Stream, StopFromInsideTheCallReturnsAtOnceAndIsTheLastCall) {
    sink->onFrame = [&](const RecordingSink::FramePointer&) { camera->stop(sink); };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    camera->close();
    EXPECT_EQ(1, sink->frames());
    EXPECT_TRUE(sink->ends().empty()) << "a stop is no end";
}

TEST_F(Stream, AStopWaitsForTheCallInProgress) {
    std::mutex mutex;
    std::condition_variable changed;
    bool inside = false, leave = false;
    std::atomic<bool> left{false};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        std::unique_lock<std::mutex> lock(mutex);
        inside = true;
        changed.notify_all();
        changed.wait(lock, [&] { return leave; });
        left = true;
    };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait(lock, [&] { return inside; });
    std::thread stopper([&] {
        camera->stop(sink);
        EXPECT_TRUE(left);
    });
    leave = true;
    changed.notify_all();
    lock.unlock();
    stopper.join();
}

TEST_F(Stream, StopFromInsideAndOutsideAtOnceDoesNotHang) {
    for (int i = 0; i < 200; ++i) {
        auto fresh = std::make_shared<RecordingSink>();
        fresh->onFrame = [&](const RecordingSink::FramePointer&) { camera->stop(fresh); };
        ASSERT_FALSE(camera->start(WIDTH, HEIGHT, fresh));
        camera->stop(fresh);
        ASSERT_LE(fresh->frames(), 1);
    }
}

TEST_F(Stream, CanBeStartedAgainFromInsideTheCallThatStoppedIt) {
    auto next = std::make_shared<RecordingSink>();
    std::atomic<bool> refused{false};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        camera->stop(sink);
        refused = static_cast<bool>(camera->start(WIDTH, HEIGHT, next));
    };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    EXPECT_TRUE(next->waitForFrames(3));
    camera->stop(next);
    EXPECT_FALSE(refused);
    EXPECT_EQ(1, sink->frames());
}

TEST_F(Stream, CloseStopsWhatStillRuns) {
    auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, second));
    ASSERT_TRUE(second->waitForFrames(1));
    camera->close();
    const int arrived = sink->frames() + second->frames();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(arrived, sink->frames() + second->frames());
    camera->stop(sink);
    camera->stop(second);
    EXPECT_TRUE(camera->start(WIDTH, HEIGHT, sink)) << "it is closed";
}

TEST_F(Stream, CloseFromInsideTheCallDoesNotHang) {
    sink->onFrame = [&](const RecordingSink::FramePointer&) { camera->close(); };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    EXPECT_EQ(1, sink->frames());
}

TEST_F(Stream, StoppingASinkThatWasNotStartedIsHarmless) {
    camera->stop(sink);
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    camera->stop(std::make_shared<RecordingSink>());
    EXPECT_TRUE(sink->waitForFrames(5));
    camera->stop(sink);
    camera->stop(sink);
}

TEST_F(Stream, StartIsRefusedBeforeOpen) {
    camera->close();
    EXPECT_EQ("Fixture is not open", camera->start(WIDTH, HEIGHT, sink).text);
}

TEST_F(Stream, TheThreadEndsWithTheLastSink) {
    auto second = std::make_shared<RecordingSink>();
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(0));
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, second));
    ASSERT_TRUE(sink->waitForFrames(2));
    ASSERT_TRUE(second->waitForFrames(2));
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(1)) << "one for both";
    camera->stop(sink);
    ASSERT_TRUE(second->waitForMoreFrames(2));
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(1));
    camera->stop(second);
    EXPECT_TRUE(becomesTheNumberOfDeliveryThreads(0));
}

TEST_F(Stream, DetachCloseAndStopAtOnceDoNotHang) {
    camera->close();
    for (int i = 0; i < 100; ++i) {
        virtualCamera->attach();
        camera = listed("fixture");
        auto fresh = std::make_shared<RecordingSink>();
        ASSERT_FALSE(camera->open());
        ASSERT_FALSE(camera->start(WIDTH, HEIGHT, fresh));
        std::thread detacher([&] { virtualCamera->detach(); });
        std::thread closer([&] { camera->close(); });
        camera->stop(fresh);
        const int arrived = fresh->frames();
        detacher.join();
        closer.join();
        ASSERT_EQ(arrived, fresh->frames());
        ASSERT_LE(fresh->ends().size(), 1u);
    }
}

} // namespace
