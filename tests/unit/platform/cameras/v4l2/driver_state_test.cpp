// What drivers keep from one capture to the next, and from before the device left.
#include "platform/cameras/v4l2/v4l2_provider.h"
#include "unit/platform/cameras/v4l2/camera_fixture.h"

#include <cerrno>

namespace ostrel::tests {

namespace {

// A driver that places the picture in a part of the buffer, and remembers where.
class ComposingKernel : public ScriptedKernel {
public:
    v4l2_rect place = {8, 4, 16, 12};
    bool fixed = false;

protected:
    int doIoctl(int descriptor, unsigned long request, void* argument) override {
        if (request != VIDIOC_G_SELECTION && request != VIDIOC_S_SELECTION)
            return ScriptedKernel::doIoctl(descriptor, request, argument);
        auto& selection = *static_cast<v4l2_selection*>(argument);
        const bool set = request == VIDIOC_S_SELECTION;
        if (selection.type != V4L2_BUF_TYPE_VIDEO_CAPTURE || selection.target != V4L2_SEL_TGT_COMPOSE ||
            (set && fixed)) {
            errno = EINVAL;
            return -1;
        }
        (set ? place : selection.r) = set ? selection.r : place;
        return 0;
    }
};

class DriverStateTest : public V4l2CameraTest {
protected:
    std::shared_ptr<ComposingKernel> composing = std::make_shared<ComposingKernel>();

    DriverStateTest() { kernel = composing; }
};

} // namespace

TEST_F(DriverStateTest, APictureLeftInAPartOfTheBufferFillsItAgain) {
    start();
    EXPECT_EQ(composing->place.left, 0);
    EXPECT_EQ(composing->place.top, 0);
    EXPECT_EQ(composing->place.width, 64u);
    EXPECT_EQ(composing->place.height, 48u);
    deliver(100);
}

TEST_F(DriverStateTest, ADriverThatKeepsThePictureWhereItIsStillCaptures) {
    composing->fixed = true;
    start();
    EXPECT_EQ(composing->place.width, 16u);
    deliver(100);
}

TEST_F(DriverStateTest, ACameraWhoseDeviceLeftIsNotListedForItsNode) {
    const auto provider = cameras::v4l2::makeProvider(kernel, discovery);
    kernel->plug(path, device);
    discovery->add(path);
    ASSERT_EQ(provider->list().size(), 1u);
    const auto listed = provider->list().front();
    ASSERT_FALSE(listed->open());
    ASSERT_FALSE(listed->start(64, 48, sink));

    kernel->unplug(path); // the node stays
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_TRUE(provider->list().empty());
    listed->stop(sink);
    listed->close();
    EXPECT_TRUE(provider->list().empty());
}

} // namespace ostrel::tests
