// Receivers, such as those of HDMI: what comes in decides the size, and changes when it likes.
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <linux/videodev2.h>

namespace ostrel::tests {

using cameras::Size;

namespace {

class SignalSourceTest : public V4l2CameraTest {
protected:
    SignalSourceTest() { device.incoming = Size(64, 48); }

    // The stream runs in this size, and a picture of it arrives.
    void expectPictures(const Size& size, uint8_t value) {
        const int before = sink->frames();
        FrameScript frame;
        frame.bytes.assign(static_cast<size_t>(size.width * size.height), value);
        ASSERT_TRUE(comesTrue([&] {
            return camera->statistics().granted.size == size && kernel->isStreaming(path) &&
                   kernel->feed(path, frame);
        })) << camera->statistics().granted.size.width;
        ASSERT_TRUE(sink->waitForFrames(before + 1));
        EXPECT_EQ(brightness(sink->newest()), value);
    }
};

} // namespace

TEST_F(SignalSourceTest, IsTakenOverBeforeTheFormatIsChosen) {
    plug();
    kernel->changeSource(path, Size(32, 24)); // while nobody listens
    ASSERT_FALSE(camera->open());
    ASSERT_FALSE(camera->start(64, 48, sink));
    expectPictures(Size(32, 24), 7);
    EXPECT_EQ(kernel->calls(VIDIOC_STREAMON), 1);
}

TEST_F(SignalSourceTest, ThatChangesIsFollowedByTheRunningStream) {
    start();
    expectPictures(Size(64, 48), 1);
    const auto held = sink->newest();
    kernel->changeSource(path, Size(128, 96));
    expectPictures(Size(128, 96), 2);
    kernel->changeSource(path, Size(32, 24));
    expectPictures(Size(32, 24), 3);
    EXPECT_EQ(brightness(held), 1);
    EXPECT_TRUE(sink->ends().empty());
    EXPECT_EQ(camera->statistics().restarts, 0u); // it has not stalled
}

TEST_F(SignalSourceTest, ThatGoesAwayIsWaitedFor) {
    start();
    expectPictures(Size(64, 48), 1);
    kernel->changeSource(path, Size(0, 0));
    ASSERT_TRUE(kernel->waitUntilIdle(path));
    kernel->changeSource(path, Size(32, 24));
    expectPictures(Size(32, 24), 2);
    EXPECT_TRUE(sink->ends().empty());
}

TEST_F(SignalSourceTest, IsNoReasonToStartForEverWhereTheDriverTellsOfTheTimingsThatWereSet) {
    CallRule rule;
    rule.call = VIDIOC_S_DV_TIMINGS;
    rule.times = FOREVER;
    rule.before = [this] { kernel->changeSource(path, Size(64, 48)); };
    kernel->script().add(rule);
    start();
    expectPictures(Size(64, 48), 5);
    EXPECT_EQ(kernel->calls(VIDIOC_STREAMON), 1);
}

} // namespace ostrel::tests
