// Seeing that somebody else has changed a control.
#include "unit/platform/cameras/v4l2/controls_fixture.h"

#include <poll.h>
#include <thread>

namespace ostrel::tests {

namespace {

const int TIMEOUT = 60000; // milliseconds; only a hang is waited out for so long

class ControlWatchTest : public ControlsTest {
protected:
    static bool isReadable(const OVideoControlWatch& watch, int timeoutMs) {
        pollfd told = {watch.descriptor(), POLLIN, 0};
        return ::poll(&told, 1, timeoutMs) == 1;
    }
    static std::string names(const QList<OVideoControl>& controls) {
        std::string result;
        for (const OVideoControl& control : controls)
            result += std::string(result.empty() ? "" : ", ") + control.name().toUtf8().constData();
        return result;
    }
};

} // namespace

TEST_F(ControlWatchTest, SeesWhatAnotherProgramHasSetOnceWithItsNewestValue) {
    plug();
    {
        OVideoControlWatch watch(id);
        EXPECT_EQ(watch.error(), QString());
        EXPECT_FALSE(isReadable(watch, 0));
        EXPECT_TRUE(watch.take().isEmpty());
        EXPECT_EQ(watch.wait(0), 0);
        kernel->setControl(path, BRIGHTNESS, 11);
        kernel->setControl(path, BRIGHTNESS, 12);
        EXPECT_TRUE(isReadable(watch, TIMEOUT));
        EXPECT_EQ(watch.wait(TIMEOUT), 1);
        const QList<OVideoControl> changed = watch.take();
        ASSERT_EQ(changed.size(), 1);
        EXPECT_EQ(changed[0].id(), BRIGHTNESS);
        EXPECT_EQ(changed[0].value(), 12);
        EXPECT_FALSE(isReadable(watch, 0));
        EXPECT_TRUE(watch.take().isEmpty());
    }
}

// A wait takes what the driver tells out of its queue.
TEST_F(ControlWatchTest, IsReadableUntilWhatAWaitHasFoundIsTaken) {
    plug();
    OVideoControlWatch watch(id);
    kernel->setControl(path, BRIGHTNESS, 11);
    EXPECT_EQ(watch.wait(TIMEOUT), 1);
    EXPECT_TRUE(isReadable(watch, 0));
    EXPECT_EQ(watch.wait(0), 1);
    EXPECT_EQ(names(watch.take()), "Brightness");
    EXPECT_FALSE(isReadable(watch, 0));
}

TEST_F(ControlWatchTest, SeesWhatThisProcessSetsAndWhatBecomesActiveByIt) {
    plug();
    OVideoControlWatch watch(id);
    EXPECT_EQ(set(QList<OVideoControl>() << with(AUTOGAIN, 0)), "");
    EXPECT_TRUE(isReadable(watch, TIMEOUT));
    const QList<OVideoControl> changed = watch.take();
    EXPECT_EQ(names(changed), "Gain, Automatic, Gain");
    ASSERT_EQ(changed.size(), 2);
    EXPECT_FALSE(changed[1].isInactive());
}

TEST_F(ControlWatchTest, WaitsForWhatComesLater) {
    plug();
    OVideoControlWatch watch(id);
    const auto gate = std::make_shared<Gate>();
    gate->shut();
    std::thread other([&] {
        gate->pass();
        kernel->setControl(path, BRIGHTNESS, 13);
    });
    gate->awaitArrivals(1);
    EXPECT_EQ(watch.wait(1), 0);
    gate->open();
    EXPECT_EQ(watch.wait(-1), 1);
    EXPECT_EQ(names(watch.take()), "Brightness");
    other.join();
}

TEST_F(ControlWatchTest, IsToldThatTheCameraHasLeft) {
    plug();
    OVideoControlWatch watch(id);
    unplug();
    EXPECT_TRUE(isReadable(watch, TIMEOUT));
    EXPECT_EQ(watch.wait(TIMEOUT), -1);
    EXPECT_EQ(watch.error(), QString::fromStdString(where + " was unplugged"));
    EXPECT_TRUE(watch.take().isEmpty());
    EXPECT_EQ(watch.wait(TIMEOUT), -1);
}

TEST_F(ControlWatchTest, SaysWhyItSeesNothing) {
    {
        OVideoControlWatch watch(id);
        EXPECT_EQ(watch.error(), QString("No camera with the identifier \"" + id + "\" is attached"));
        EXPECT_EQ(watch.descriptor(), -1);
        EXPECT_EQ(watch.wait(-1), -1);
        EXPECT_TRUE(watch.take().isEmpty());
    }
    device.tellsOfControls = false;
    plug();
    {
        OVideoControlWatch watch(id);
        EXPECT_EQ(watch.error(), QString::fromStdString(where + " does not tell when its controls change"));
    }
    for (const int error : {EPERM, EACCES, EBUSY, EIO, ENODEV, ENOMEM, EMFILE}) {
        kernel->failNext(OPEN, error);
        OVideoControlWatch watch(id);
        EXPECT_NE(watch.error(), QString()) << error;
        EXPECT_EQ(watch.wait(-1), -1);
    }
}

TEST_F(ControlWatchTest, LetsACaptureBe) {
    plug();
    OVideoControlWatch watch(id);
    const auto camera = cameras::attachedCameras().front();
    const auto sink = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->open());
    ASSERT_FALSE(camera->start(64, 48, sink));
    FrameScript frame;
    frame.bytes.assign(64 * 48, 7);
    EXPECT_TRUE(kernel->feed(path, frame));
    EXPECT_TRUE(sink->waitForFrames(1));
    EXPECT_FALSE(isReadable(watch, 0));
    kernel->setControl(path, BRIGHTNESS, 11);
    EXPECT_EQ(watch.wait(TIMEOUT), 1);
    camera->stop(sink);
    camera->close();
    sink->drop();
}

} // namespace ostrel::tests
