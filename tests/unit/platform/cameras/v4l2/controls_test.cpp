// Listing and setting the controls of V4L2 cameras: types, rules and order.
#include "unit/platform/cameras/v4l2/controls_fixture.h"

#include <ostrel/modes.h>

#include <algorithm>
#include <thread>

namespace ostrel::tests {

TEST_F(ControlsTest, AreListedInTheDriversOrderWithAllThatIsKnownOfThem) {
    plug();
    const QList<OVideoControl> controls = list();
    ASSERT_EQ(controls.size(), 14);
    const OVideoControl& brightness = controls[0];
    EXPECT_EQ(brightness.id(), BRIGHTNESS);
    EXPECT_EQ(brightness.name(), QString("Brightness"));
    EXPECT_EQ(brightness.type(), OVideoControl::INTEGER);
    EXPECT_EQ(brightness.minimum(), -64);
    EXPECT_EQ(brightness.maximum(), 64);
    EXPECT_EQ(brightness.step(), 1);
    EXPECT_EQ(brightness.defaultValue(), 0);
    EXPECT_TRUE(brightness.hasValue());
    EXPECT_EQ(brightness.value(), 0);
    EXPECT_FALSE(brightness.isInactive() || brightness.isReadOnly() || brightness.isVolatile() ||
                 brightness.isGrabbed());
    EXPECT_TRUE(listed(GAIN).isInactive());
    EXPECT_EQ(listed(GAIN).automaticControl(), AUTOGAIN); // not exposure, which is automatic as well
    EXPECT_EQ(listed(EXPOSURE).automaticControl(), EXPOSURE_AUTO);
    EXPECT_EQ(brightness.automaticControl(), 0u);
    EXPECT_EQ(listed(AUTOGAIN).type(), OVideoControl::BOOLEAN);
    EXPECT_EQ(listed(FOCUS).step(), 5);
    EXPECT_FALSE(listed(FOCUS).isInactive());
    EXPECT_TRUE(listed(PRIVACY).isReadOnly());
    EXPECT_TRUE(listed(PRIVACY).isVolatile());
}

TEST_F(ControlsTest, HaveNamesThatAreTextWhateverTheDriverSays) {
    device.controls[0].name = "Bright\x1b[2J\xC2\x9Bness\xE2\x82";
    device.controls[3].items[1] = "50\nHz and more than the thirty-two bytes that there are";
    plug();
    EXPECT_EQ(listed(BRIGHTNESS).name(), QString::fromUtf8("Bright [2J ness\xEF\xBF\xBD\xEF\xBF\xBD"));
    EXPECT_EQ(listed(LINE).items().value(1), QString("50 Hz and more than the thirty-t"));
}

TEST_F(ControlsTest, OfEveryTypeAreListedWithTheirValues) {
    plug();
    QMap<int, QString> items;
    items.insert(0, "Disabled");
    items.insert(1, "50 Hz");
    items.insert(3, "Auto");
    EXPECT_EQ(listed(LINE).type(), OVideoControl::MENU);
    EXPECT_EQ(listed(LINE).items(), items);
    items.clear();
    items.insert(0, "-40");
    items.insert(2, "5000000000");
    EXPECT_EQ(listed(NUMBERS).type(), OVideoControl::INTEGER_MENU);
    EXPECT_EQ(listed(NUMBERS).items(), items);
    EXPECT_EQ(listed(BUTTON).type(), OVideoControl::BUTTON);
    EXPECT_FALSE(listed(BUTTON).hasValue());
    EXPECT_EQ(listed(MASK).type(), OVideoControl::BITMASK);
    EXPECT_EQ(listed(MASK).value(), int64_t(0x80000000));
    EXPECT_EQ(listed(MASK).maximum(), int64_t(0xf0000001));
    EXPECT_EQ(listed(LARGE).type(), OVideoControl::INTEGER64);
    EXPECT_EQ(listed(LARGE).maximum(), int64_t(1) << 40);
    EXPECT_EQ(listed(TEXT).type(), OVideoControl::TEXT);
    EXPECT_EQ(listed(TEXT).text(), QString());
}

TEST_F(ControlsTest, OfEveryTypeAreSetInOneCall) {
    plug();
    OVideoControl text(TEXT);
    text.setText(QString::fromUtf8("K\xC3\xBC"
                                   "che"));
    QList<OVideoControl> values;
    values << with(BRIGHTNESS, -5) << with(LINE, 3) << with(MASK, 0x70000001) << with(LARGE, int64_t(1) << 39)
           << text << with(NUMBERS, 2) << with(BUTTON, 0);
    EXPECT_EQ(set(values), "");
    EXPECT_EQ(kernel->calls(VIDIOC_S_EXT_CTRLS), 1);
    EXPECT_EQ(now(BRIGHTNESS), -5);
    EXPECT_EQ(now(LINE), 3);
    EXPECT_EQ(now(MASK), 0x70000001);
    EXPECT_EQ(now(LARGE), int64_t(1) << 39);
    EXPECT_EQ(now(NUMBERS), 2);
    EXPECT_EQ(kernel->controlText(path, TEXT), "K\xC3\xBC"
                                               "che");
    EXPECT_EQ(listed(TEXT).text(), text.text());
    EXPECT_EQ(listed(BRIGHTNESS).value(), -5);
}

TEST_F(ControlsTest, SetNothingWhenNothingIsAskedFor) {
    plug();
    EXPECT_EQ(set(QList<OVideoControl>()), "");
    EXPECT_EQ(kernel->calls(OPEN), 0);
}

TEST_F(ControlsTest, AreValuesOfTheirOwn) {
    plug();
    OVideoControl one = listed(BRIGHTNESS);
    const OVideoControl copy = one;
    one.setValue(7);
    EXPECT_EQ(copy.value(), 0);
    EXPECT_EQ(one.name(), QString("Brightness"));
    EXPECT_EQ(set(QList<OVideoControl>() << one), "");
    EXPECT_EQ(now(BRIGHTNESS), 7);
}

TEST_F(ControlsTest, ThatAreInactiveAreRefusedNamingTheAutomaticOneThatHasTheSay) {
    plug();
    EXPECT_EQ(
        set(QList<OVideoControl>() << with(GAIN, 50)),
        "Gain of " + where +
            " is inactive while Gain, Automatic has the say: set that to manual first, or at the same time");
    EXPECT_EQ(
        set(QList<OVideoControl>() << with(BRIGHTNESS, 1) << with(EXPOSURE, 50)),
        "Exposure Time, Absolute of " + where +
            " is inactive while Auto Exposure has the say: set that to manual first, or at the same time");
    EXPECT_EQ(now(GAIN), 10);
    EXPECT_EQ(now(AUTOGAIN), 1);
    EXPECT_EQ(now(BRIGHTNESS), 0);
    EXPECT_EQ(kernel->calls(VIDIOC_S_EXT_CTRLS), 0);
}

TEST_F(ControlsTest, ThatAreInactiveForAnUnknownReasonAreRefusedToo) {
    device.controls[0].flags = V4L2_CTRL_FLAG_INACTIVE;
    plug();
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 1)),
              "Brightness of " + where + " is inactive: another setting of the camera has the say");
}

TEST_F(ControlsTest, ThatAreInactiveAreSetWhenTheSameCallReleasesThemWhateverTheOrder) {
    device.takesHeldControls = false;
    plug();
    EXPECT_EQ(set(QList<OVideoControl>()
                  << with(EXPOSURE, 50) << with(GAIN, 60) << with(AUTOGAIN, 0) << with(EXPOSURE_AUTO, 1)),
              "");
    EXPECT_EQ(now(EXPOSURE), 50);
    EXPECT_EQ(now(GAIN), 60);
    EXPECT_EQ(now(EXPOSURE_AUTO), 1);
    EXPECT_EQ(now(AUTOGAIN), 0);
    kernel->setControl(path, EXPOSURE_AUTO, 3);
    EXPECT_EQ(listed(GAIN).automaticControl(), AUTOGAIN); // that it can be given back to
}

TEST_F(ControlsTest, ThatAreSetToAnotherAutomaticModeReleaseNothing) {
    device.controls[9].items[0] = "Auto Mode";
    plug();
    EXPECT_NE(set(QList<OVideoControl>() << with(EXPOSURE_AUTO, 0) << with(EXPOSURE, 50)), "");
    EXPECT_EQ(now(EXPOSURE_AUTO), 3);
}

TEST_F(ControlsTest, AreAsBeforeWhenWhatWasReleasedIsRefused) {
    plug();
    kernel->failNext(VIDIOC_S_EXT_CTRLS, EIO, 1, 1); // the second of the two steps
    EXPECT_EQ(set(QList<OVideoControl>() << with(AUTOGAIN, 0) << with(GAIN, 60)),
              "Gain of " + where + " cannot be set: Input/output error");
    EXPECT_EQ(now(AUTOGAIN), 1);
    EXPECT_EQ(now(GAIN), 10);
}

TEST_F(ControlsTest, AreRefusedValuesThatTheyDoNotTakeWithThoseThatTheyDo) {
    plug();
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 65)),
              "Brightness of " + where + " takes -64 to 64");
    EXPECT_EQ(set(QList<OVideoControl>() << with(LINE, 2)),
              "Power Line Frequency of " + where + " takes 0 (Disabled), 1 (50 Hz), 3 (Auto)");
    EXPECT_EQ(set(QList<OVideoControl>() << with(LINE, (int64_t(1) << 32) + 1)),
              "Power Line Frequency of " + where + " takes 0 (Disabled), 1 (50 Hz), 3 (Auto)");
    EXPECT_EQ(set(QList<OVideoControl>() << with(MASK, 2)),
              "Bitmask of " + where + " takes bits of 4026531841");
    OVideoControl text(TEXT);
    text.setText(QString(9, QChar('x')));
    EXPECT_EQ(set(QList<OVideoControl>() << text), "Text of " + where + " takes texts of 0 to 8 bytes");
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 1) << with(BRIGHTNESS, 2)),
              "Brightness of " + where + " is to be set twice at once");
    EXPECT_EQ(set(QList<OVideoControl>() << with(0x00980999, 2)), where + " has no control 0x00980999");
    EXPECT_EQ(set(QList<OVideoControl>() << with(PRIVACY, 1)), "Privacy of " + where + " can only be read");
    EXPECT_EQ(kernel->calls(VIDIOC_S_EXT_CTRLS), 0);
}

TEST_F(ControlsTest, ThatOneOfSeveralIsRefusedLeaveAllAsTheyWereAndNameIt) {
    device.controls[3].flags = V4L2_CTRL_FLAG_GRABBED;
    plug();
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 5) << with(LINE, 1)),
              "Power Line Frequency of " + where + " cannot be changed while the camera is in use");
    EXPECT_EQ(now(BRIGHTNESS), 0);
}

TEST_F(ControlsTest, ThatWereSetAllTheSameAreNamed) {
    device.takesHeldControls = false;
    device.controls[0].heldBy = LINE; // unknown to the library, and only once this call has set that
    device.controls[0].released = {1};
    plug();
    EXPECT_EQ(set(QList<OVideoControl>() << with(LINE, 3) << with(BRIGHTNESS, 5)),
              "Brightness of " + where +
                  " cannot be set: Input/output error; set all the same: Power Line Frequency");
    EXPECT_EQ(now(LINE), 3);
}

TEST_F(ControlsTest, WorkWhileTheCameraIsCapturedFromHereAndElsewhere) {
    plug();
    const auto camera = cameras::attachedCameras().front();
    const auto sink = std::make_shared<RecordingSink>();
    ASSERT_FALSE(camera->open());
    ASSERT_FALSE(camera->start(64, 48, sink));
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 9)), "");
    EXPECT_EQ(listed(BRIGHTNESS).value(), 9);
    FrameScript frame;
    frame.bytes.assign(64 * 48, 7);
    EXPECT_TRUE(kernel->feed(path, frame));
    EXPECT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    camera->close();
    sink->drop();
    const int other = kernel->open(path.c_str(), 0); // as another program has it
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 10)), "");
    kernel->close(other);
}

TEST_F(ControlsTest, HoldNoLockThatACaptureOrAQuestionNeeds) {
    plug();
    const auto camera = cameras::attachedCameras().front();
    const auto gate = kernel->hold(path, VIDIOC_QUERY_EXT_CTRL);
    std::thread slow([&] { EXPECT_FALSE(videoControls(id).isEmpty()); });
    gate->awaitArrivals(1);
    EXPECT_EQ(cameras::attachedCameras().size(), 1u);
    EXPECT_TRUE(camera->attached());
    EXPECT_EQ(camera->statistics().delivered, 0u);
    gate->open();
    slow.join();
}

TEST_F(ControlsTest, AndModesDoNotWaitForEachOther) {
    device.oneCallAtATime = false; // nor does the driver make them wait
    plug();
    for (const unsigned long request : {VIDIOC_QUERY_EXT_CTRL, VIDIOC_ENUM_FMT}) {
        const auto gate = kernel->hold(path, request);
        const bool isOfModes = request == VIDIOC_ENUM_FMT;
        std::thread slow([&] { isOfModes ? videoModes(id).size() : videoControls(id).size(); });
        gate->awaitArrivals(1);
        if (isOfModes)
            EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 9)), "");
        else
            EXPECT_EQ(videoModes(id).size(), 1);
        gate->open();
        slow.join();
    }
    EXPECT_EQ(now(BRIGHTNESS), 9);
}

TEST_F(ControlsTest, OfACameraThatHasLeftAreNotThere) {
    plug();
    const auto controls = cameras::attachedCameras().front()->controls();
    unplug();
    EXPECT_EQ(whyNoList(), "No camera with the identifier \"usb-046d:0825-at-p-1:00\" is attached");
    EXPECT_FALSE(setVideoControls(id, QList<OVideoControl>() << with(BRIGHTNESS, 1)));
    plug(); // another one in its place
    std::vector<cameras::Control> none;
    EXPECT_EQ(controls->list(none).text, where + " was unplugged");
    EXPECT_EQ(controls->set({}).text, where + " was unplugged");
}

TEST_F(ControlsTest, ThatACameraDoesNotHaveAreSaidSo) {
    device.controls.clear();
    plug();
    EXPECT_EQ(whyNoList(), where + " has no controls");
}

} // namespace ostrel::tests
