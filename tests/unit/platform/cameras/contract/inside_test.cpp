// A sink may call its camera from inside its own call.
#include "unit/platform/cameras/contract/kinds.h"

#include "support/gate.h"

#include <atomic>
#include <thread>

namespace ostrel::tests {

using cameras::Error;
using support::RecordingSink;

class FromInside : public Contract {};
OSTREL_FOR_EACH_KIND(FromInside);

TEST_P(FromInside, AStopReturnsAtOnceAndIsTheLastCall) {
    sink->onFrame = [&](const RecordingSink::FramePointer&) { camera->stop(sink); };
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    EXPECT_TRUE(becomesStreaming(false));
    camera->close();
    EXPECT_EQ(sink->frames(), 1);
    EXPECT_TRUE(sink->ends().empty()) << "a stop is no end";
    EXPECT_TRUE(converts(sink->newest()));
}

TEST_P(FromInside, AStopOutsideWaitsForTheCallThatHasStoppedByItself) {
    support::Gate started, stopped; // a start ends what has stopped meanwhile, and waits for it
    std::atomic<bool> left{false};
    started.shut();
    stopped.shut();
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        started.pass();
        camera->stop(sink);
        stopped.pass();
        left = true;
    };
    ASSERT_EQ(start(sink).text, "");
    started.open();
    stopped.awaitArrivals(1);
    std::thread opener([&] { stopped.open(); });
    camera->stop(sink);
    EXPECT_TRUE(left);
    opener.join();
}

TEST_P(FromInside, AStopAndOneOutsideAtOnceDoNotHang) {
    for (int i = 0; i < 100; ++i) {
        const auto fresh = std::make_shared<RecordingSink>();
        fresh->onFrame = [&](const RecordingSink::FramePointer&) { camera->stop(fresh); };
        ASSERT_EQ(start(fresh).text, "");
        camera->stop(fresh);
        ASSERT_LE(fresh->frames(), 1);
    }
}

TEST_P(FromInside, ACloseDoesNotHangAndGivesEverythingBack) {
    sink->onFrame = [&](const RecordingSink::FramePointer&) { camera->close(); };
    ASSERT_EQ(start(sink).text, "");
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink); // waits for that call
    EXPECT_EQ(sink->frames(), 1);
    EXPECT_EQ(kind->leftBehind(), "");
    EXPECT_TRUE(start(sink)) << "it is closed";
}

TEST_P(FromInside, AStopAndAStartGiveAStreamOfItsOwn) {
    const auto next = std::make_shared<RecordingSink>();
    std::atomic<bool> refused{false};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        camera->stop(sink);
        refused = static_cast<bool>(start(next));
    };
    ASSERT_EQ(start(sink).text, "");
    EXPECT_TRUE(next->waitForFrames(3));
    camera->stop(next);
    camera->stop(sink);
    EXPECT_FALSE(refused);
    EXPECT_EQ(sink->frames(), 1);
    EXPECT_TRUE(becomesStreaming(false));
}

TEST_P(FromInside, AnotherSinkCanJoinAlsoOneThatWantsMore) {
    const auto next = std::make_shared<RecordingSink>();
    std::atomic<int> refused{0};
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        refused += static_cast<bool>(camera->start(640, 480, next));
    };
    ASSERT_EQ(start(sink).text, "");
    EXPECT_TRUE(next->waitForFrames(3));
    camera->stop(sink);
    ASSERT_TRUE(next->waitForMoreFrames(3));
    camera->stop(next);
    EXPECT_EQ(refused, 0);
}

TEST_P(FromInside, ASinkCanJoinWhileAnotherJoinWaitsForThisVeryCall) {
    const auto larger = std::make_shared<RecordingSink>();
    const auto next = std::make_shared<RecordingSink>();
    std::atomic<int> refused{0};
    std::thread waiting;
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        if (waiting.joinable())
            return;
        waiting = std::thread([&] { refused += static_cast<bool>(camera->start(640, 480, larger)); });
        for (int i = 0; i < 200; ++i) { // some of them once the other waits
            refused += static_cast<bool>(camera->start(800, 600, next));
            camera->stop(next);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    };
    ASSERT_EQ(start(sink).text, "");
    EXPECT_TRUE(larger->waitForFrames(3));
    camera->stop(sink); // whose calls would begin it all again
    waiting.join();
    EXPECT_EQ(refused, 0);
}

TEST_P(FromInside, TheLastHolderOfACameraMayLetGoOfIt) {
    support::Gate started;
    const auto end = std::make_shared<support::Gate>(); // outlives the call
    const std::weak_ptr<cameras::Camera> alive = camera;
    started.shut();
    end->shut();
    sink->onFrame = [&, end](const RecordingSink::FramePointer&) {
        started.pass();
        kind->unplug(); // the listing lets go of it
        camera.reset();
        end->pass();
    };
    ASSERT_EQ(start(sink).text, "");
    started.open();
    end->awaitArrivals(1);
    EXPECT_TRUE(alive.expired());
    EXPECT_EQ(kind->leftBehind(), "");
    EXPECT_EQ(sink->frames(), 1);
    end->open();
    camera = kind->plug();
    EXPECT_EQ(camera->open().text, "");
}

} // namespace ostrel::tests
