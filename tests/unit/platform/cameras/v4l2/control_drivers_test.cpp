// Drivers that lack calls for controls, fail them, or answer nonsense.
#include "unit/platform/cameras/v4l2/controls_fixture.h"

#include <algorithm>

namespace ostrel::tests {

TEST_F(ControlsTest, OfADriverWithoutTheCallsForSeveralAreListedAndSetOneByOne) {
    for (const ControlCalls calls : {ControlCalls::WithoutExtended, ControlCalls::WithoutNext}) {
        device.controlCalls = calls;
        device.controls.erase(std::remove_if(device.controls.begin(), device.controls.end(),
                                             [](const ControlScript& one) { // beyond such a driver's numbers
                                                 return one.id >= BUTTON || one.id >= V4L2_CID_LASTP1;
                                             }),
                              device.controls.end());
        plug();
        ASSERT_EQ(list().size(), 4);
        EXPECT_EQ(listed(LINE).items().size(), 3);
        EXPECT_EQ(set(QList<OVideoControl>() << with(GAIN, 20) << with(AUTOGAIN, 0) << with(BRIGHTNESS, 3)),
                  "");
        EXPECT_EQ(listed(GAIN).value(), 20);
        EXPECT_EQ(listed(BRIGHTNESS).value(), 3);
        unplug();
    }
}

TEST_F(ControlsTest, OfADriverThatTakesOneClassAtATimeAreReadAndSetOneByOne) {
    device.controlCalls = ControlCalls::ExtendedOneByOne;
    plug();
    OVideoControl text(TEXT);
    text.setText("hello");
    EXPECT_EQ(listed(LARGE).value(), 5);
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 3) << with(LARGE, 6) << text), "");
    EXPECT_EQ(listed(LARGE).value(), 6);
    EXPECT_EQ(listed(TEXT).text(), QString("hello"));
    EXPECT_EQ(listed(BRIGHTNESS).value(), 3);
}

TEST_F(ControlsTest, WhoseValuesCannotBeReadAreListedWithoutThem) {
    device.controlCalls = ControlCalls::ListedNotReadable;
    plug();
    for (const OVideoControl& control : list())
        EXPECT_FALSE(control.hasValue()) << control.name().toStdString();
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 3)),
              "Brightness of " + where + " cannot be set: Inappropriate ioctl for device");
}

TEST_F(ControlsTest, OfWhichOneCannotBeReadHaveTheirValuesAllTheSame) {
    plug();
    kernel->failNext(VIDIOC_G_EXT_CTRLS, EIO);
    kernel->failNext(VIDIOC_G_CTRL, EIO);
    const QList<OVideoControl> controls = list();
    EXPECT_FALSE(controls[0].hasValue());
    EXPECT_TRUE(controls[1].hasValue());
    EXPECT_EQ(controls[2].value(), 10);
}

TEST_F(ControlsTest, OfWhichOneCannotBeDescribedAreListedAllTheSame) {
    plug();
    kernel->failNext(VIDIOC_QUERY_EXT_CTRL, EIO, 1, 1); // the second
    const QList<OVideoControl> controls = list();
    EXPECT_EQ(controls.size(), 14); // the driver answers when it is asked another way round
    kernel->failNext(VIDIOC_QUERY_EXT_CTRL, EIO, 1000);
    EXPECT_EQ(whyNoList(), "The controls of " + where + " cannot be used: Input/output error");
}

// Each call with each errno: a reason or nothing, never a wrong value, never a hang or a descriptor left.
TEST_F(ControlsTest, ByWhateverErrnoACallFailsEndInAReason) {
    const unsigned long calls[] = {OPEN,
                                   VIDIOC_QUERY_EXT_CTRL,
                                   VIDIOC_QUERYMENU,
                                   VIDIOC_G_EXT_CTRLS,
                                   VIDIOC_G_CTRL,
                                   VIDIOC_S_EXT_CTRLS,
                                   VIDIOC_S_CTRL,
                                   VIDIOC_TRY_EXT_CTRLS,
                                   VIDIOC_QUERYCTRL};
    for (const unsigned long call : calls)
        for (const int error :
             {EPERM, ENOENT, EIO, ENXIO, EBADF, EAGAIN, ENOMEM, EACCES, EFAULT, EBUSY, ENODEV, EINVAL, ENOSPC,
              ERANGE, ENOTTY, EOPNOTSUPP, EPROTO, EPIPE, ETIMEDOUT}) {
            for (const int times : {1, FOREVER}) {
                SCOPED_TRACE(std::to_string(call) + " " + std::to_string(error) + " " +
                             std::to_string(times));
                kernel = std::make_shared<ScriptedKernel>();
                Machine other(cameras::v4l2::makeProvider(kernel, discovery));
                plug();
                kernel->failNext(call, error, times);
                QString why;
                const QList<OVideoControl> controls = videoControls(id, &why);
                EXPECT_EQ(controls.isEmpty(), !why.isEmpty());
                why.clear();
                const bool done = setVideoControls(
                    id, QList<OVideoControl>() << with(BRIGHTNESS, 5) << with(AUTOGAIN, 0) << with(GAIN, 60),
                    &why);
                EXPECT_EQ(done, why.isEmpty());
                if (done) {
                    EXPECT_EQ(now(BRIGHTNESS), 5);
                    EXPECT_EQ(now(GAIN), 60);
                }
                EXPECT_EQ(kernel->openDescriptors(), 0);
                EXPECT_EQ(kernel->misuse(), std::vector<std::string>());
            }
        }
}

TEST_F(ControlsTest, OfACameraThatLeavesMeanwhileSayThatItWasUnplugged) {
    plug();
    kernel->failNext(VIDIOC_S_EXT_CTRLS, ENODEV);
    EXPECT_EQ(set(QList<OVideoControl>() << with(BRIGHTNESS, 5)), where + " was unplugged");
    kernel->failNext(VIDIOC_G_EXT_CTRLS, EIO, FOREVER);
    kernel->failNext(VIDIOC_G_CTRL, ENODEV, FOREVER);
    EXPECT_EQ(whyNoList(), where + " was unplugged");
}

TEST_F(ControlsTest, OfANodeThatMayNotBeOpenedSayWhatHelps) {
    plug();
    kernel->failNext(OPEN, EACCES, FOREVER);
    EXPECT_NE(whyNoList().find("group \"video\""), std::string::npos);
}

// Menus of two thousand million items and beyond all numbers, and a text that would need all memory.
TEST_F(ControlsTest, OfAbsurdLimitsAreListedInTime) {
    device.controls[3].maximum = 0x7fffffff;
    device.controls[8].minimum = device.controls[8].maximum = INT64_MAX;
    device.controls[7].maximum = 0x7fffffff;
    plug();
    EXPECT_EQ(listed(LINE).items().size(), 3);
    EXPECT_EQ(listed(NUMBERS).items().size(), 0);
    EXPECT_TRUE(listed(TEXT).hasValue());
}

// A driver that never says "no more".
TEST_F(ControlsTest, ThatGoRoundInCirclesAreListedOnce) {
    class Circle : public ScriptedKernel {
    public:
        int doIoctl(int descriptor, unsigned long request, void* argument) override {
            if (request != VIDIOC_QUERY_EXT_CTRL)
                return ScriptedKernel::doIoctl(descriptor, request, argument);
            auto& answer = *static_cast<v4l2_query_ext_ctrl*>(argument);
            answer = {};
            answer.id = BRIGHTNESS;
            answer.type = V4L2_CTRL_TYPE_INTEGER;
            return 0;
        }
    };
    kernel = std::make_shared<Circle>();
    Machine other(cameras::v4l2::makeProvider(kernel, discovery));
    plug();
    EXPECT_EQ(list().size(), 1);
}

} // namespace ostrel::tests
