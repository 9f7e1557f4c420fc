// Names, values and files of settings, with a camera that has controls of every kind.
#include "apps/common/control_names.h"
#include "apps/common/control_settings.h"
#include "unit/platform/cameras/v4l2/controls_fixture.h"

#include <stdexcept>

namespace ostrel::tests {

using namespace ostrel::apps;

namespace {

class ControlSettings : public ControlsTest {
protected:
    int64_t parsed(uint32_t control, const char* text) {
        return withValue(listed(control), list(), text).value();
    }
    uint32_t meantBy(uint32_t control, const char* text) {
        return withValue(listed(control), list(), text).id();
    }
    std::string refusal(uint32_t control, const char* text) {
        try {
            parsed(control, text);
        } catch (const std::invalid_argument& error) {
            return error.what();
        }
        return "accepted";
    }
    uint32_t found(const char* name) {
        const QList<OVideoControl> controls = list();
        const int index = findControl(controls, std::string(name));
        return index < 0 ? 0 : controls[index].id();
    }
};

} // namespace

TEST_F(ControlSettings, NamesAreWrittenInLowerCaseWithoutBlanks) {
    EXPECT_EQ(controlKey(QString("White Balance, Automatic")), "white_balance_automatic");
    EXPECT_EQ(controlKey(QString("Focus (absolute)")), "focus_absolute");
    EXPECT_EQ(controlKey(QString("  3D  Filter!")), "3d_filter");
}

TEST_F(ControlSettings, NamesOfOtherKernelsAreTheSameControls) {
    plug();
    for (const char* name :
         {"auto_exposure", "exposure_auto", "Auto Exposure", "AUTO_EXPOSURE", "0x009a0901"})
        EXPECT_EQ(found(name), EXPOSURE_AUTO) << name;
    for (const char* name : {"exposure_time_absolute", "exposure_absolute"})
        EXPECT_EQ(found(name), EXPOSURE) << name;
    EXPECT_EQ(found("focus_auto"), FOCUS_AUTO);
    EXPECT_EQ(found("focus_automatic_continuous"), FOCUS_AUTO);
    EXPECT_EQ(found("autogain"), AUTOGAIN);
    EXPECT_EQ(found("exposure"), 0u);
    EXPECT_EQ(found("white_balance_automatic"), 0u); // this camera has none
    EXPECT_EQ(found(""), 0u);
    // As an older kernel named it.
    device.controls[9].name = "Exposure, Auto";
    plug();
    EXPECT_EQ(found("exposure_auto"), EXPOSURE_AUTO);
    EXPECT_EQ(found("auto_exposure"), EXPOSURE_AUTO);
}

TEST_F(ControlSettings, ValuesAreNumbersItemsWordsAndDefaults) {
    plug();
    EXPECT_EQ(parsed(BRIGHTNESS, "-3"), -3);
    EXPECT_EQ(parsed(BRIGHTNESS, "0x10"), 16);
    EXPECT_EQ(parsed(BRIGHTNESS, "-0x10"), -16);
    EXPECT_EQ(parsed(BRIGHTNESS, "010"), 10);
    EXPECT_EQ(parsed(GAIN, "default"), 10);
    EXPECT_EQ(parsed(LINE, "auto"), 3); // an item of its own
    EXPECT_EQ(parsed(LINE, "50"), 1);   // no value of an item, but the beginning of one
    EXPECT_EQ(parsed(LINE, "3"), 3);
    EXPECT_EQ(parsed(LINE, "7"), 7); // a number, which will be refused as one
    EXPECT_EQ(parsed(NUMBERS, "5000000000"), 2);
    EXPECT_EQ(parsed(LINE, "50 hz"), 1);
    EXPECT_EQ(parsed(EXPOSURE_AUTO, "manual"), 1);
    EXPECT_EQ(parsed(AUTOGAIN, "on"), 1);
    EXPECT_EQ(parsed(AUTOGAIN, "off"), 0);
    EXPECT_EQ(parsed(AUTOGAIN, "manual"), 0);
    EXPECT_EQ(parsed(LARGE, "1099511627776"), int64_t(1) << 40);
    EXPECT_EQ(withValue(listed(TEXT), list(), "default").text(), QString("default"));
    EXPECT_EQ(refusal(BRIGHTNESS, "bright"), "'bright' is no value of brightness: -64 to 64, default");
    EXPECT_EQ(refusal(LINE, "60"), "accepted");
    EXPECT_EQ(refusal(LINE, "never"),
              "'never' is no value of power_line_frequency: 0 (Disabled), 1 (50 Hz), 3 (Auto), default");
    EXPECT_EQ(refusal(BRIGHTNESS, ""), "'' is no value of brightness: -64 to 64, default");
}

TEST_F(ControlSettings, AutoTurnsToTheAutomaticControl) {
    plug();
    EXPECT_EQ(meantBy(EXPOSURE, "auto"), EXPOSURE_AUTO);
    EXPECT_EQ(parsed(EXPOSURE, "auto"), 3);
    EXPECT_EQ(meantBy(FOCUS, "auto"), FOCUS_AUTO);
    EXPECT_EQ(parsed(FOCUS, "auto"), 1);
    EXPECT_EQ(meantBy(EXPOSURE_AUTO, "auto"), EXPOSURE_AUTO);
    EXPECT_EQ(parsed(EXPOSURE_AUTO, "auto"), 3);
    EXPECT_EQ(parsed(AUTOGAIN, "auto"), 1);
    EXPECT_EQ(refusal(BRIGHTNESS, "auto"), "brightness has no automatic mode");
}

TEST_F(ControlSettings, ValuesAreShownAsPeopleReadThem) {
    plug();
    EXPECT_EQ(valueText(listed(LINE)), "1 (50 Hz)");
    EXPECT_EQ(valueText(listed(AUTOGAIN)), "on");
    EXPECT_EQ(valueText(listed(MASK)), "0x80000000");
    EXPECT_EQ(valueText(listed(BUTTON)), "-");
    EXPECT_EQ(valueText(listed(TEXT)), "''");
    EXPECT_EQ(valueText(listed(NUMBERS)), "0 (-40)");
}

TEST_F(ControlSettings, ComeBackFromAFileAfterTheCameraWasUnplugged) {
    device.takesHeldControls = false;
    plug();
    OVideoControl text(TEXT);
    text.setText("desk");
    ASSERT_EQ(set(QList<OVideoControl>()
                  << with(EXPOSURE_AUTO, 1) << with(EXPOSURE, 50) << with(FOCUS, 40) << with(BRIGHTNESS, -7)
                  << with(LARGE, int64_t(1) << 39) << with(MASK, 0x70000000) << text),
              "");
    SavedCameras saved;
    saved[id].name = "HD Webcam";
    saved[id].controls = savedControls(list());
    SavedCameras read;
    ASSERT_TRUE(fromJson(toJson(saved), read));
    ASSERT_EQ(read.keys(), QList<QString>() << id);
    EXPECT_EQ(read[id].name, QString("HD Webcam"));

    unplug();
    plug();
    ASSERT_EQ(now(EXPOSURE), 157);
    EXPECT_EQ(applyControls(id, read[id].controls), QStringList());
    EXPECT_EQ(now(EXPOSURE_AUTO), 1);
    EXPECT_EQ(now(EXPOSURE), 50);
    EXPECT_EQ(now(FOCUS), 40);
    EXPECT_EQ(now(BRIGHTNESS), -7);
    EXPECT_EQ(now(LARGE), int64_t(1) << 39);
    EXPECT_EQ(now(MASK), 0x70000000);
    EXPECT_EQ(kernel->controlText(path, TEXT), "desk");
    EXPECT_EQ(now(GAIN), 10); // automatic when it was saved
    const int calls = kernel->calls(VIDIOC_S_EXT_CTRLS);
    EXPECT_EQ(applyControls(id, read[id].controls), QStringList());
    EXPECT_EQ(kernel->calls(VIDIOC_S_EXT_CTRLS), calls); // nothing was to be done
}

TEST_F(ControlSettings, ThatCannotBeSetAreSaidAndTheRestIsSet) {
    plug();
    SavedControl brightness, gain, unknown;
    brightness.id = BRIGHTNESS;
    brightness.value = 5;
    gain.id = GAIN;
    gain.value = 50;
    unknown.id = 0x00980999;
    unknown.key = "sparkle";
    const QStringList refused = applyControls(id, QList<SavedControl>() << gain << unknown << brightness);
    ASSERT_EQ(refused.size(), 2);
    EXPECT_EQ(refused[0], QString("the camera has no control sparkle"));
    EXPECT_TRUE(refused[1].startsWith("Gain of ")) << refused[1].toStdString();
    EXPECT_EQ(now(BRIGHTNESS), 5);
    unplug();
    EXPECT_EQ(applyControls(id, QList<SavedControl>() << brightness).size(), 1);
}

TEST_F(ControlSettings, DefaultsPutAutomaticModesBackFirst) {
    device.takesHeldControls = false;
    plug();
    ASSERT_EQ(set(QList<OVideoControl>() << with(EXPOSURE_AUTO, 1) << with(EXPOSURE, 50) << with(FOCUS, 40)
                                         << with(AUTOGAIN, 0) << with(GAIN, 60) << with(BRIGHTNESS, -7)),
              "");
    EXPECT_EQ(applyDefaults(id), QStringList());
    EXPECT_EQ(now(EXPOSURE_AUTO), 3);
    EXPECT_EQ(now(EXPOSURE), 50); // the automatic one's to say
    EXPECT_EQ(now(AUTOGAIN), 1);
    EXPECT_EQ(now(FOCUS), 0);
    EXPECT_EQ(now(BRIGHTNESS), 0);
}

TEST_F(ControlSettings, FilesThatAreNoneAreRefused) {
    SavedCameras cameras;
    for (const char* text : {"", "[]", "{\"a\": 1}", "{\"a\": {\"controls\": 2}}", "no json"})
        EXPECT_FALSE(fromJson(text, cameras)) << text;
    EXPECT_TRUE(fromJson("{}", cameras));
}

// A setting that cannot be read must not set a control to 0.
TEST_F(ControlSettings, FilesWithASettingThatIsNoneAreRefused) {
    SavedCameras cameras;
    for (const char* control :
         {"1", "{}", "{\"id\": 1}", "{\"value\": 1}", "{\"id\": 1, \"value\": \"auto\"}",
          "{\"id\": 1, \"value\": null}", "{\"id\": 1, \"value\": 1.5}", "{\"id\": 1, \"value\": 1e300}",
          "{\"id\": -1, \"value\": 1}", "{\"id\": 0, \"value\": 1}", "{\"id\": 4294967296, \"value\": 1}",
          "{\"id\": \"1\", \"value\": 1}", "{\"id\": 1, \"text\": 1}"})
        EXPECT_FALSE(fromJson(QByteArray("{\"a\": {\"controls\": [") + control + "]}}", cameras)) << control;
    EXPECT_TRUE(fromJson("{\"a\": {\"controls\": [{\"id\": 4294967295, \"value\": -1}]}}", cameras));
    EXPECT_EQ(cameras["a"].controls[0].id, 4294967295u);
    EXPECT_EQ(cameras["a"].controls[0].value, -1);
}

TEST_F(ControlSettings, NumbersOfSixtyFourBitsComeBackFromAFile) {
    SavedCameras saved, read;
    for (const int64_t value : {INT64_MAX, INT64_MIN, (int64_t(1) << 53) + 1}) {
        SavedControl control;
        control.id = LARGE;
        control.value = value;
        saved["a"].controls = {control};
        ASSERT_TRUE(fromJson(toJson(saved), read));
        EXPECT_EQ(read["a"].controls[0].value, value);
    }
}

} // namespace ostrel::tests
