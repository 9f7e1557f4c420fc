// Every kind of camera, with memory running out at each step of its life.
#include "unit/failure/failing_allocations.h"
#include "unit/platform/cameras/contract/kinds.h"

#include "support/gate.h"

#include <memory>

namespace ostrel::tests {

using support::RecordingSink;

// What the scripted kernel needs of its own is not the camera's.
class WithoutMemory : public Contract {
protected:
    WithoutMemory() { g_kernelCall = pauseFailing; }
    ~WithoutMemory() override { g_kernelCall = nullptr; }

    // Needs no memory itself.
    struct PoorSink : cameras::FrameSink {
        int failAt = 0;
        std::unique_ptr<FailingAllocation> failing;
        support::Gate frame, end;
        void frameArrived(const std::shared_ptr<cameras::CameraFrame>&) override {
            failing.reset();
            if (failAt)
                failing = std::make_unique<FailingAllocation>(failAt);
            frame.pass();
        }
        void streamEnded(const cameras::Error&) override { end.pass(); }
    };
};
OSTREL_FOR_EACH_KIND(WithoutMemory);

TEST_P(WithoutMemory, AStartThatFailedLeavesTheCameraAsItWas) {
    int failed = 0;
    for (bool reached = true; reached; ++failed) {
        const auto one = std::make_shared<RecordingSink>();
        bool refused = false;
        const Outcome outcome = runFailingAt(failed + 1, [&] { refused = static_cast<bool>(start(one)); });
        reached = outcome.reached;
        if (outcome.thrown || refused) {
            EXPECT_TRUE(becomesStreaming(false)) << "allocation " << failed + 1;
            const auto again = std::make_shared<RecordingSink>();
            ASSERT_EQ(start(again).text, "") << "allocation " << failed + 1;
            ASSERT_TRUE(again->waitForFrames(1));
            camera->stop(again);
        }
        camera->stop(one);
        ASSERT_TRUE(becomesStreaming(false)) << "allocation " << failed + 1;
    }
    EXPECT_GE(failed, 4);
}

TEST_P(WithoutMemory, AJoinThatFailedDisturbsNobody) {
    ASSERT_EQ(start(sink).text, "");
    for (int n = 1; n < 20; ++n) {
        const auto one = std::make_shared<RecordingSink>();
        runFailingAt(n, [&] { camera->start(640, 480, one); });
        camera->stop(one);
        ASSERT_TRUE(sink->waitForMoreFrames(1));
    }
}

// Between any two frames the n-th allocation of the thread that delivers fails.
TEST_P(WithoutMemory, ADeliveryThreadLosesFramesAndNothingElse) {
    std::unique_ptr<FailingAllocation> failing;
    int n = 0;
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        failing.reset();
        failing = std::make_unique<FailingAllocation>(n = n % 8 + 1);
    };
    if (std::string(GetParam().name) == "Push")
        return; // delivers on the client's own threads
    ASSERT_EQ(start(sink).text, "");
    EXPECT_TRUE(sink->waitForFrames(100));
    camera->stop(sink);
    sink->onFrame = nullptr;
}

TEST_P(WithoutMemory, TheEndIsToldAllTheSame) {
    for (int n = 1; n < 12; ++n) {
        const auto one = std::make_shared<PoorSink>();
        one->failAt = std::string(GetParam().name) == "Push" ? 0 : n;
        ASSERT_EQ(start(one).text, "");
        one->frame.awaitArrivals(1);
        kind->unplug();
        one->end.awaitArrivals(1);
        EXPECT_NE(camera->statistics().ended, "");
        camera->close();
        camera = kind->plug();
        ASSERT_EQ(camera->open().text, "");
    }
}

} // namespace ostrel::tests
