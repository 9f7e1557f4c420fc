// States, joins, leaves and the promise of stop(), which every kind of camera keeps.
#include "unit/platform/cameras/contract/kinds.h"

#include "support/gate.h"

#include <atomic>
#include <new>
#include <thread>

namespace ostrel::tests {

using cameras::Error;
using support::RecordingSink;

class Life : public Contract {};
OSTREL_FOR_EACH_KIND(Life);

TEST_P(Life, FramesComeFromTheStartOnAndTheLastStopEndsTheStream) {
    EXPECT_TRUE(becomesStreaming(false));
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(3));
    EXPECT_TRUE(converts(sink->newest()));
    EXPECT_TRUE(becomesStreaming(true));
    camera->stop(sink);
    EXPECT_TRUE(becomesStreaming(false));
    EXPECT_TRUE(sink->ends().empty()) << "a stop is no end";
    EXPECT_EQ(camera->statistics().ended, "");
    EXPECT_GE(camera->statistics().delivered, 3u);
}

TEST_P(Life, OpeningTwiceIsAsOnce) {
    EXPECT_EQ(camera->open().text, "");
    camera->close();
    EXPECT_NE(start(sink).text.find("is not open"), std::string::npos);
}

TEST_P(Life, ClosingTwiceOrUnopenedDoesNoHarm) {
    camera->close();
    camera->close();
    ASSERT_EQ(camera->open().text, "");
    ASSERT_EQ(start(sink).text, "");
    EXPECT_TRUE(sink->waitForFrames(1));
}

TEST_P(Life, StartIsRefusedInWordsUnlessOpen) {
    camera->close();
    EXPECT_EQ(start(sink).text.find("Camera"), 0u);
    EXPECT_NE(start(sink).text.find("is not open"), std::string::npos);
    EXPECT_TRUE(becomesStreaming(false));
}

TEST_P(Life, StartsAgainAfterAStopWithFiguresOfItsOwn) {
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(50));
    camera->stop(sink);
    const auto again = std::make_shared<RecordingSink>();
    ASSERT_EQ(start(again).text, "");
    ASSERT_TRUE(again->waitForFrames(1));
    camera->stop(again);
    EXPECT_EQ(camera->statistics().delivered, static_cast<uint64_t>(again->frames()));
}

TEST_P(Life, ASecondSinkJoinsTheRunningStreamAndLeavesItToTheFirst) {
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(3));
    ASSERT_EQ(start(second).text, "");
    ASSERT_TRUE(second->waitForFrames(3));
    EXPECT_GE(camera->statistics().delivered, 6u) << "one stream for both";
    camera->stop(second);
    const int stopped = second->frames();
    ASSERT_TRUE(sink->waitForMoreFrames(10));
    EXPECT_EQ(second->frames(), stopped);
    camera->stop(sink);
    EXPECT_TRUE(becomesStreaming(false));
}

TEST_P(Life, TheFirstSinkLeavesTheStreamToTheSecond) {
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_EQ(start(sink).text, "");
    ASSERT_EQ(start(second).text, "");
    camera->stop(sink);
    const int stopped = sink->frames();
    ASSERT_TRUE(second->waitForMoreFrames(10));
    EXPECT_EQ(sink->frames(), stopped);
    camera->stop(second);
    EXPECT_TRUE(becomesStreaming(false));
}

TEST_P(Life, ASinkStartedTwiceHearsEachFrameOnce) {
    ASSERT_EQ(start(sink).text, "");
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(5));
    camera->stop(sink);
    EXPECT_EQ(camera->statistics().delivered, static_cast<uint64_t>(sink->frames()));
}

TEST_P(Life, StoppingASinkThatWasNotStartedDoesNoHarm) {
    camera->stop(sink);
    ASSERT_EQ(start(sink).text, "");
    camera->stop(std::make_shared<RecordingSink>());
    EXPECT_TRUE(sink->waitForFrames(5));
    camera->stop(sink);
    camera->stop(sink);
}

TEST_P(Life, NothingArrivesAfterAStop) {
    const auto other = std::make_shared<RecordingSink>(); // shows that frames go on
    ASSERT_EQ(start(other).text, "");
    for (int i = 0; i < 50; ++i) {
        const auto fresh = std::make_shared<RecordingSink>();
        ASSERT_EQ(start(fresh).text, "");
        if (i % 2) {
            ASSERT_TRUE(fresh->waitForFrames(1));
        }
        camera->stop(fresh);
        const int arrived = fresh->frames();
        ASSERT_TRUE(other->waitForMoreFrames(2));
        ASSERT_EQ(fresh->frames(), arrived);
    }
    camera->stop(other);
}

TEST_P(Life, AStopWaitsForTheCallInProgress) {
    support::Gate inside;
    std::atomic<bool> left{false};
    inside.shut();
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        inside.pass();
        left = true;
    };
    ASSERT_EQ(start(sink).text, "");
    inside.awaitArrivals(1);
    std::thread stopper([&] {
        camera->stop(sink);
        EXPECT_TRUE(left);
    });
    inside.open();
    stopper.join();
}

TEST_P(Life, AStopDoesNotWaitForTheCallOfAnotherSink) {
    support::Gate inside;
    inside.shut();
    const auto other = std::make_shared<RecordingSink>();
    sink->onFrame = [&](const RecordingSink::FramePointer&) { inside.pass(); };
    ASSERT_EQ(start(sink).text, "");
    ASSERT_EQ(start(other).text, "");
    inside.awaitArrivals(1);
    camera->stop(other); // would hang here
    inside.open();
    camera->stop(sink);
}

TEST_P(Life, CloseStopsWhatStillRuns) {
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_EQ(start(sink).text, "");
    ASSERT_EQ(start(second).text, "");
    ASSERT_TRUE(second->waitForFrames(1));
    camera->close();
    const int arrived = sink->frames() + second->frames();
    EXPECT_TRUE(becomesStreaming(false));
    EXPECT_EQ(kind->leftBehind(), "");
    EXPECT_EQ(sink->frames() + second->frames(), arrived);
    EXPECT_TRUE(sink->ends().empty());
    camera->stop(sink);
    camera->stop(second);
    EXPECT_TRUE(start(sink)) << "it is closed";
}

TEST_P(Life, FramesHeldStayConvertibleAfterStopAndCloseAndTheCamerasEnd) {
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    EXPECT_TRUE(converts(sink->newest()));
    camera->close();
    EXPECT_TRUE(converts(sink->newest()));
    const auto frame = sink->newest();
    std::shared_ptr<cameras::Camera> gone = std::move(camera);
    gone.reset();
    kind->unplug();
    EXPECT_TRUE(converts(frame));
    camera = kind->plug();
}

// A sink that has no memory loses the frame; neither the camera nor another sink does.
TEST_P(Life, ASinkWithoutMemoryCostsTheOthersNoFrame) {
    if (std::string(GetParam().name) == "Push")
        return; // the exception is the pushing client's own, see test_failure
    const auto poor = std::make_shared<RecordingSink>();
    poor->onFrame = [](const auto&) { throw std::bad_alloc(); };
    poor->onEnd = [] { throw std::bad_alloc(); };
    ASSERT_EQ(start(poor).text, "");
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(20)); // more than there are buffers
    EXPECT_GE(poor->frames(), 20);
    kind->unplug();
    EXPECT_TRUE(sink->waitForEnd()) << "told after the poor one";
    camera->stop(poor);
}

} // namespace ostrel::tests
