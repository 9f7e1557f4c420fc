// The controls of the test pattern, through the public headers.
#include <ostrel/controls.h>
#include <ostrel/virtual_camera.h>

#include "platform/cameras/registry.h"
#include "support/machine.h"
#include "support/recording_sink.h"
#include "unit/platform/cameras/virtual/pictures.h"

#include <gtest/gtest.h>

#include <poll.h>

using namespace ostrel;
using namespace ostrel::tests;
using ostrel::support::Machine;
using ostrel::support::RecordingSink;

namespace {

const int TIMEOUT = 60000; // milliseconds; only a hang is waited out for so long

class PatternControls : public testing::Test {
protected:
    const Machine machine;
    const QString id = QString::fromLatin1("pattern");
    OVideoTestPatternCamera camera{id, QString::fromLatin1("Moving bars"), 320, 240, 100};

    PatternControls() { camera.attach(); }

    OVideoControl listed(const char* name) {
        QString why;
        for (const OVideoControl& control : videoControls(id, &why))
            if (control.name() == QLatin1String(name))
                return control;
        ADD_FAILURE() << "not listed: " << name << ": " << why.toStdString();
        return OVideoControl();
    }
    bool set(const char* name, int64_t value) {
        OVideoControl control = listed(name);
        control.setValue(value);
        return setVideoControls(id, QList<OVideoControl>() << control);
    }
    // A picture that was captured after the call.
    Bgra capture() {
        const auto all = cameras::attachedCameras();
        const auto sink = std::make_shared<RecordingSink>();
        Bgra picture(320, 240);
        EXPECT_FALSE(all.front()->open());
        EXPECT_FALSE(all.front()->start(320, 240, sink));
        EXPECT_TRUE(sink->waitForFrames(2));
        EXPECT_TRUE(sink->newest()->convert(picture.bytes.data(), 320, 240, picture.stride));
        all.front()->stop(sink);
        all.front()->close();
        sink->drop();
        return picture;
    }
    // From the left edge; the lane is at 18 thirtieths of the height, the mark the only red of 255 in it.
    static int markIn(const Bgra& picture) {
        for (int x = 0; x < picture.width; ++x)
            if (picture.at(x, picture.height * 18 / 30)[2] == 255)
                return x;
        return -1;
    }
};

} // namespace

TEST_F(PatternControls, AreBrightnessAndSpeed) {
    const OVideoControl brightness = listed("Brightness");
    EXPECT_EQ(brightness.id(), 0x00980900u); // V4L2_CID_BRIGHTNESS
    EXPECT_EQ(brightness.type(), OVideoControl::INTEGER);
    EXPECT_EQ(brightness.minimum(), 0);
    EXPECT_EQ(brightness.maximum(), 255);
    EXPECT_EQ(brightness.defaultValue(), 128);
    EXPECT_EQ(brightness.value(), 128);
    EXPECT_EQ(listed("Pattern Speed").defaultValue(), 1);
    EXPECT_EQ(listed("Pattern Speed").maximum(), 10);
}

TEST_F(PatternControls, BrightnessChangesThePictureButNotItsCode) {
    const auto blueAndRed = [](const Bgra& picture) { // of the red bar, the sixth of eight
        const uint8_t* const pixel = picture.at(320 * 11 / 16, 240 * 2 / 5);
        return std::make_pair(int(pixel[0]), int(pixel[2]));
    };
    EXPECT_EQ(blueAndRed(capture()), std::make_pair(0, 255));
    ASSERT_TRUE(set("Brightness", 168));
    EXPECT_EQ(blueAndRed(capture()), std::make_pair(40, 255));
    ASSERT_TRUE(set("Brightness", 28));
    const Bgra dark = capture();
    EXPECT_EQ(blueAndRed(dark), std::make_pair(0, 155));
    EXPECT_EQ(dark.at(0, 0)[3], 255);
    uint32_t counter = 0, clock = 0;
    EXPECT_TRUE(decode(dark, counter, clock));
    EXPECT_FALSE(set("Brightness", 256));
}

TEST_F(PatternControls, SpeedMovesTheMarkOrHoldsIt) {
    ASSERT_TRUE(set("Pattern Speed", 0));
    uint32_t counter = 0, clock = 0;
    const Bgra one = capture(); // each stream counts from 1
    const Bgra later = capture();
    EXPECT_TRUE(decode(later, counter, clock));
    EXPECT_EQ(markIn(one), 0);
    EXPECT_EQ(markIn(later), 0);
    ASSERT_TRUE(set("Pattern Speed", 10));
    const Bgra fast = capture();
    ASSERT_TRUE(decode(fast, counter, clock));
    // 320 pixels less the mark's 16, in 119 steps.
    EXPECT_EQ(markIn(fast), static_cast<int>(counter * 10 % 120) * 304 / 119);
}

TEST_F(PatternControls, AreWatched) {
    OVideoControlWatch watch(id);
    EXPECT_EQ(watch.error(), QString());
    EXPECT_EQ(watch.wait(0), 0);
    ASSERT_TRUE(set("Brightness", 128)); // as it is
    EXPECT_EQ(watch.wait(0), 0);
    ASSERT_TRUE(set("Brightness", 1));
    ASSERT_TRUE(set("Brightness", 2));
    pollfd told = {watch.descriptor(), POLLIN, 0};
    EXPECT_EQ(::poll(&told, 1, TIMEOUT), 1);
    EXPECT_EQ(watch.wait(-1), 1);
    const QList<OVideoControl> changed = watch.take();
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0].value(), 2);
    EXPECT_EQ(::poll(&told, 1, 0), 0);
    camera.detach();
    EXPECT_EQ(::poll(&told, 1, TIMEOUT), 1);
    EXPECT_EQ(watch.wait(-1), -1);
    EXPECT_EQ(watch.error(), QString("Moving bars was unplugged"));
}

TEST_F(PatternControls, AttachedAgainAreLikeNew) {
    ASSERT_TRUE(set("Brightness", 1));
    camera.detach();
    EXPECT_TRUE(videoControls(id).isEmpty());
    camera.attach();
    EXPECT_EQ(listed("Brightness").value(), 128);
}

TEST_F(PatternControls, OtherVirtualCamerasHaveNone) {
    OVideoPushCamera push(QString::fromLatin1("push"), QString::fromLatin1("Pushed"));
    ASSERT_TRUE(push.attach());
    QString why;
    EXPECT_TRUE(videoControls(push.uniqueID(), &why).isEmpty());
    EXPECT_EQ(why, QString("Pushed has no controls"));
    const OVideoControlWatch watch(push.uniqueID());
    EXPECT_EQ(watch.error(), why);
}
