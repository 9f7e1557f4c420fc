// The controls of the kernel's own drivers: vivid, which has every type, and uvcvideo with the emulated
// webcam.
#include "vm/programs/capture.h"
#include "vm/programs/known_pictures.h"

#include <ostrel/controls.h>

#include <gtest/gtest.h>

#include <linux/v4l2-controls.h>
#include <string>

using namespace ostrel;
using namespace ostrel::vm;

namespace {

const int TIMEOUT = 120000; // milliseconds

OVideoControl named(const char* name) {
    for (const OVideoControl& control : videoControls(onlyCamera()))
        if (control.name() == QLatin1String(name))
            return control;
    ADD_FAILURE() << "not listed: " << name;
    return OVideoControl();
}

OVideoControl numbered(uint32_t id) {
    for (const OVideoControl& control : videoControls(onlyCamera()))
        if (control.id() == id)
            return control;
    ADD_FAILURE() << "not listed: " << id;
    return OVideoControl();
}

OVideoControl with(OVideoControl control, int64_t value) {
    control.setValue(value);
    return control;
}

std::string set(const QList<OVideoControl>& values) {
    QString why;
    const bool done = setVideoControls(onlyCamera(), values, &why);
    EXPECT_EQ(done, why.isEmpty());
    return why.toStdString();
}

double meanOf(const VideoFrame& frame) {
    double sum = 0;
    for (const uint8_t byte : frame.data)
        sum += byte;
    return sum / static_cast<double>(frame.data.size());
}

} // namespace

TEST(VividControls, OfEveryTypeAreListedAndSetInOneCall) {
    const OVideoControl boolean = named("Boolean"), integer = named("Integer 32 Bits"),
                        large = named("Integer 64 Bits"), menu = named("Menu"), bitmask = named("Bitmask"),
                        numbers = named("Integer Menu"), button = named("Button");
    OVideoControl text = named("String");
    EXPECT_EQ(boolean.type(), OVideoControl::BOOLEAN);
    EXPECT_EQ(integer.type(), OVideoControl::INTEGER);
    EXPECT_EQ(large.type(), OVideoControl::INTEGER64);
    EXPECT_EQ(menu.type(), OVideoControl::MENU);
    EXPECT_LT(menu.items().size(), menu.maximum() - menu.minimum() + 1) << "its menu has holes";
    EXPECT_EQ(bitmask.type(), OVideoControl::BITMASK);
    EXPECT_EQ(numbers.type(), OVideoControl::INTEGER_MENU);
    EXPECT_FALSE(numbers.items().isEmpty());
    EXPECT_EQ(button.type(), OVideoControl::BUTTON);
    EXPECT_EQ(text.type(), OVideoControl::TEXT);

    text.setText(QString::fromLatin1("abcd"));
    ASSERT_GE(text.maximum(), 4);
    const int last = menu.items().lastKey();
    QList<OVideoControl> values;
    values << with(boolean, !boolean.value()) << with(integer, integer.minimum())
           << with(large, large.maximum()) << with(menu, last) << with(bitmask, bitmask.maximum())
           << with(numbers, numbers.items().lastKey()) << with(button, 1) << text;
    EXPECT_EQ(set(values), "");
    EXPECT_EQ(named("Boolean").value(), !boolean.value());
    EXPECT_EQ(named("Integer 32 Bits").value(), integer.minimum());
    EXPECT_EQ(named("Integer 64 Bits").value(), large.maximum());
    EXPECT_EQ(named("Menu").value(), last);
    EXPECT_EQ(named("Bitmask").value(), bitmask.maximum());
    EXPECT_EQ(named("Integer Menu").value(), numbers.items().lastKey());
    EXPECT_EQ(named("String").text().toStdString(), "abcd");
}

TEST(VividControls, ThatOneOfSeveralIsRefusedLeaveAllAsTheyWere) {
    const OVideoControl brightness = numbered(V4L2_CID_BRIGHTNESS);
    const OVideoControl menu = named("Menu");
    int hole = static_cast<int>(menu.minimum());
    while (menu.items().contains(hole))
        ++hole;
    EXPECT_NE(set(QList<OVideoControl>() << with(brightness, 5) << with(menu, hole)), "");
    EXPECT_EQ(numbered(V4L2_CID_BRIGHTNESS).value(), brightness.value());
}

TEST(VividControls, AutogainHasTheSayOverGain) {
    EXPECT_EQ(set(QList<OVideoControl>() << with(numbered(V4L2_CID_AUTOGAIN), 1)), "");
    const OVideoControl gain = numbered(V4L2_CID_GAIN);
    EXPECT_TRUE(gain.isInactive());
    EXPECT_EQ(gain.automaticControl(), uint32_t(V4L2_CID_AUTOGAIN));
    const std::string refused = set(QList<OVideoControl>() << with(gain, 33));
    EXPECT_NE(refused.find("Gain, Automatic has the say"), std::string::npos) << refused;
    EXPECT_EQ(numbered(V4L2_CID_AUTOGAIN).value(), 1);
    EXPECT_EQ(set(QList<OVideoControl>() << with(gain, 33) << with(numbered(V4L2_CID_AUTOGAIN), 0)), "");
    EXPECT_FALSE(numbered(V4L2_CID_GAIN).isInactive());
    EXPECT_EQ(numbered(V4L2_CID_GAIN).value(), 33);
}

TEST(VividControls, BrightnessChangesThePicturesOfACapture) {
    Capture capture(onlyCamera(), 640, 480);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_TRUE(showsColorBars(capture.picture()));
    const double before = meanOf(capture.picture());
    const OVideoControl brightness = numbered(V4L2_CID_BRIGHTNESS);
    EXPECT_EQ(set(QList<OVideoControl>() << with(brightness, 30)), "");
    EXPECT_TRUE(
        waitUntil([&] { return capture.waitForPicture() && meanOf(capture.picture()) < before - 20; }));
    EXPECT_EQ(set(QList<OVideoControl>() << with(brightness, brightness.defaultValue())), "");
    EXPECT_TRUE(waitUntil([&] { return capture.waitForPicture() && showsColorBars(capture.picture()); }));
}

TEST(VividControls, AreSetWhileAnotherProgramStreams) {
    shell("v4l2-ctl -d /dev/video0 --stream-mmap >/tmp/held 2>&1 & echo $! >/tmp/holder");
    EXPECT_TRUE(waitUntil([] { return shellStatus("test -s /tmp/held") == 0; }));
    EXPECT_EQ(set(QList<OVideoControl>() << with(numbered(V4L2_CID_BRIGHTNESS), 61)), "");
    EXPECT_EQ(numbered(V4L2_CID_BRIGHTNESS).value(), 61);
    shell("kill $(cat /tmp/holder)");
}

TEST(VividControls, ChangesOfAnotherProgramAreSeen) {
    OVideoControlWatch watch(onlyCamera());
    ASSERT_EQ(watch.error().toStdString(), "");
    EXPECT_EQ(watch.wait(0), 0);
    shell("v4l2-ctl -d /dev/video0 -c brightness=77");
    EXPECT_EQ(watch.wait(TIMEOUT), 1);
    QList<OVideoControl> changed = watch.take();
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0].id(), uint32_t(V4L2_CID_BRIGHTNESS));
    EXPECT_EQ(changed[0].value(), 77);
    EXPECT_EQ(watch.wait(0), 0);
    // What becomes active by it is told as well.
    const bool automatic = numbered(V4L2_CID_AUTOGAIN).value() != 0;
    EXPECT_EQ(set(QList<OVideoControl>() << with(numbered(V4L2_CID_AUTOGAIN), !automatic)), "");
    EXPECT_EQ(watch.wait(TIMEOUT), 1);
    changed = watch.take();
    bool gainToo = false;
    for (const OVideoControl& control : changed)
        gainToo = gainToo || control.id() == uint32_t(V4L2_CID_GAIN);
    EXPECT_TRUE(gainToo);
}

TEST(WebcamControls, ExposureAndFocusAreHeldByTheirAutomaticModes) {
    EXPECT_TRUE(numbered(V4L2_CID_EXPOSURE_ABSOLUTE).isInactive());
    EXPECT_TRUE(numbered(V4L2_CID_FOCUS_ABSOLUTE).isInactive());
    const OVideoControl mode = numbered(V4L2_CID_EXPOSURE_AUTO);
    EXPECT_EQ(mode.items().keys(), QList<int>() << 1 << 3); // manual, aperture priority
    EXPECT_EQ(mode.value(), 3);
    EXPECT_NE(set(QList<OVideoControl>() << with(numbered(V4L2_CID_EXPOSURE_ABSOLUTE), 100)), "");
    EXPECT_EQ(set(QList<OVideoControl>() << with(numbered(V4L2_CID_EXPOSURE_ABSOLUTE), 100)
                                         << with(numbered(V4L2_CID_FOCUS_ABSOLUTE), 40)
                                         << with(numbered(V4L2_CID_FOCUS_AUTO), 0) << with(mode, 1)),
              "");
    EXPECT_EQ(numbered(V4L2_CID_EXPOSURE_ABSOLUTE).value(), 100);
    EXPECT_EQ(numbered(V4L2_CID_FOCUS_ABSOLUTE).value(), 40);
    EXPECT_FALSE(numbered(V4L2_CID_EXPOSURE_ABSOLUTE).isInactive());
}

TEST(WebcamControls, AreSetWhileItIsCapturedFrom) {
    Capture capture(onlyCamera(), 1280, 720);
    ASSERT_TRUE(capture.waitForPicture());
    EXPECT_EQ(set(QList<OVideoControl>() << with(numbered(V4L2_CID_BRIGHTNESS), 20)), "");
    EXPECT_EQ(numbered(V4L2_CID_BRIGHTNESS).value(), 20);
    EXPECT_TRUE(capture.waitForFrames(3));
    EXPECT_EQ(capture.statistics().ended.toStdString(), "");
}

TEST(WebcamControls, ChangesAreSeenAndThatItWasUnplugged) {
    OVideoControlWatch watch(onlyCamera());
    ASSERT_EQ(watch.error().toStdString(), "");
    shell("v4l2-ctl -d /dev/video0 -c brightness=33");
    EXPECT_EQ(watch.wait(TIMEOUT), 1);
    const QList<OVideoControl> changed = watch.take();
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0].value(), 33);
    cameraShell("tell_webcam unplug");
    EXPECT_EQ(watch.wait(TIMEOUT), -1);
    EXPECT_NE(watch.error().toStdString().find("unplugged"), std::string::npos)
        << watch.error().toStdString();
    cameraShell("tell_webcam plug");
    EXPECT_TRUE(waitUntil([] { return !cameras().isEmpty(); }));
}
