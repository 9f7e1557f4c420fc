// The cable is pulled, at every moment.
#include "unit/platform/cameras/v4l2/faults_fixture.h"

#include <cerrno>
#include <memory>
#include <thread>

namespace ostrel::tests {

using cameras::Error;

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
    EXPECT_LT(kernel->calls(POLL), 100);
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

} // namespace ostrel::tests
