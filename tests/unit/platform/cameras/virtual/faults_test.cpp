// Each way in which a virtual camera can be told to fail, and that it heals.
#include "capture_fixture.h"

#include <atomic>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

class Faults : public PatternFixture {};

TEST_F(Faults, NotOpeningSaysSoAndHeals) {
    camera->close();
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    const cameras::Error error = camera->open();
    EXPECT_TRUE(error);
    EXPECT_EQ(error.text, "Fixture was told not to open");
    EXPECT_TRUE(camera->start(WIDTH, HEIGHT, sink)) << "it is not open";
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_FALSE(camera->open());
    EXPECT_FALSE(camera->start(WIDTH, HEIGHT, sink));
}

TEST_F(Faults, InputRefusedLetsItOpen) {
    EXPECT_FALSE(camera->admitInput());
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_INPUT);
    camera->close();
    EXPECT_FALSE(camera->open());
    EXPECT_EQ(camera->admitInput().text, "Fixture was told to be refused as an input");
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_FALSE(camera->admitInput());
}

TEST_F(Faults, OutputRefusedDeliversNothing) {
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_OUTPUT);
    EXPECT_FALSE(camera->admitInput());
    EXPECT_EQ(camera->start(WIDTH, HEIGHT, sink).text, "Fixture was told to refuse the output");
    camera->stop(sink);
    EXPECT_EQ(virtualCamera->framesDelivered(), 0u);
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    EXPECT_TRUE(sink->waitForFrames(1));
}

TEST_F(Faults, PaddedRowsShowInTheFramesThatAreMadeFromThenOn) {
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_EQ(sink->newest()->rowBytes(8), 8 * 4);
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_PADDED_ROWS);
    ASSERT_TRUE(sink->waitForMoreFrames(2)); // one may have been on its way
    const auto padded = sink->newest();
    EXPECT_EQ(padded->rowBytes(8), 8 * 4 + 64);
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_NONE);
    ASSERT_TRUE(sink->waitForMoreFrames(2));
    EXPECT_EQ(sink->newest()->rowBytes(8), 8 * 4);
    EXPECT_EQ(padded->rowBytes(8), 8 * 4 + 64);
}

TEST_F(Faults, StalledFromTheStartItDeliversOnlyOnceHealed) {
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_STALL);
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    // At 1000 frames a second some fifty would have come.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(sink->frames(), 0);
    EXPECT_EQ(virtualCamera->framesDelivered(), 0u);
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_NONE);
    ASSERT_TRUE(sink->waitForFrames(1));
    EXPECT_TRUE(sink->ends().empty());
}

TEST_F(Faults, AfterAStallTheGapShowsInTheCounter) {
    uint32_t first = 1;
    // A busy machine may start the thread only when the stall is over.
    for (int attempt = 0; attempt < 100 && first == 1; ++attempt) {
        virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_STALL);
        auto fresh = std::make_shared<RecordingSink>();
        std::atomic<uint32_t> counter{0};
        fresh->onFrame = [&](const RecordingSink::FramePointer& frame) {
            if (counter == 0)
                counter = read(frame).counter;
        };
        ASSERT_FALSE(camera->start(WIDTH, HEIGHT, fresh));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_NONE);
        ASSERT_TRUE(fresh->waitUntil([&] { return counter != 0; }));
        camera->stop(fresh);
        first = counter;
    }
    EXPECT_GT(first, 1u);
}

TEST_F(Faults, AStalledStreamStopsAtOnce) {
    virtualCamera->setFault(VIRTUAL_CAMERA_FAULT_STALL);
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    camera->stop(sink);
    EXPECT_EQ(sink->frames(), 0);
}

TEST_F(Faults, UnpluggedItEndsTheStreamOnceWithAReason) {
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    virtualCamera->detach();
    const int arrived = sink->frames();
    EXPECT_EQ(sink->ends(), std::vector<std::string>{"Fixture was unplugged"});
    EXPECT_EQ(camera->statistics().ended, "Fixture was unplugged");
    EXPECT_FALSE(camera->attached());
    EXPECT_TRUE(read(sink->newest()).decoded) << "the last frame stays readable";
    EXPECT_TRUE(camera->start(WIDTH, HEIGHT, std::make_shared<RecordingSink>()));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(sink->frames(), arrived) << "no frame after detach() has returned";
    camera->stop(sink);
    camera->close();
    EXPECT_TRUE(camera->open());
    EXPECT_EQ(sink->ends().size(), 1u);
}

TEST_F(Faults, DestroyingTheClientsObjectUnplugs) {
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    virtualCamera.reset();
    EXPECT_EQ(sink->ends().size(), 1u);
    EXPECT_TRUE(read(sink->newest()).decoded);
    EXPECT_EQ(camera->identifier(), "fixture");
    camera->stop(sink);
    camera->close();
}

TEST_F(Faults, UnpluggedFromInsideACallItEndsWhenTheCallReturns) {
    bool endedInside = false;
    sink->onFrame = [&](const RecordingSink::FramePointer&) {
        virtualCamera->detach();
        endedInside = !sink->ends().empty();
    };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForEnd());
    camera->stop(sink);
    EXPECT_FALSE(endedInside);
    EXPECT_EQ(sink->frames(), 1);
    EXPECT_EQ(sink->ends().size(), 1u);
}

TEST_F(Faults, ASinkMayStopAndCloseWhenItIsToldTheEnd) {
    std::atomic<bool> closed{false};
    sink->onEnd = [&] {
        camera->stop(sink);
        camera->close();
        closed = true;
    };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    virtualCamera->detach(); // does not wait for whoever closes the camera meanwhile
    EXPECT_TRUE(sink->waitUntil([&] { return closed.load(); }));
    EXPECT_EQ(sink->ends().size(), 1u);
}

} // namespace
