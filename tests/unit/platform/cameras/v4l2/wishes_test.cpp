// Streams in the mode that was requested.
#include "unit/platform/cameras/v4l2/modes_fixture.h"

#include <cerrno>

namespace ostrel::tests {

using cameras::Interval;

class WishesTest : public ModesTest {};

TEST_F(WishesTest, SixtyFramesASecondAreGivenWhenTheyAreAskedFor) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {60, 30})};
    plug();
    EXPECT_EQ(granted(), "YUYV 640x480 1/30");
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    EXPECT_EQ(granted(), "YUYV 640x480 1/60");
    EXPECT_DOUBLE_EQ(kernel->interval(PATH).rate(), 60);
    EXPECT_DOUBLE_EQ(requestedVideoMode(identifier).framesPerSecond(), 60);
    EXPECT_EQ(request(OVideoMode()), "");
    EXPECT_EQ(granted(), "YUYV 640x480 1/30");
    EXPECT_EQ(requestedVideoMode(identifier).framesPerSecond(), 0);
}

TEST_F(WishesTest, EachPartOfAWishNarrowsTheAutomaticChoice) {
    device.formats = {
        raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(1280, 720)}),
        withRates(raw(V4L2_PIX_FMT_MJPEG, {only(640, 480), only(1280, 720), only(1280, 960)}), {30, 15})};
    plug();
    EXPECT_EQ(granted(), "YUYV 640x480 1/30");
    const struct {
        OVideoMode wished;
        const char* expected;
    } cases[] = {{wish("MJPG"), "MJPG 640x480 1/30"},
                 {wish("", 1280, 720), "YUYV 1280x720 1/30"},
                 {wish("", 0, 720), "YUYV 1280x720 1/30"},
                 {wish("MJPG", 1280, 0), "MJPG 1280x960 1/30"}, // of the picture's aspect
                 {wish("", 0, 0, 15), "MJPG 640x480 1/15"},
                 {wish("MJPG", 1280, 720, 15), "MJPG 1280x720 1/15"}};
    for (const auto& one : cases) {
        EXPECT_EQ(request(one.wished), "");
        EXPECT_EQ(granted(), one.expected);
    }
}

TEST_F(WishesTest, EveryListedModeCanBeRequestedAsItIs) {
    FormatScript steps = raw(V4L2_PIX_FMT_GREY, {stepwise(16, 128, 8)});
    steps.intervalType = V4L2_FRMIVAL_TYPE_CONTINUOUS;
    steps.intervals = {perSecond(120), perSecond(5), perSecond(1)};
    device.formats = {steps, withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(320, 240)}), {30, 7}),
                      raw(V4L2_PIX_FMT_SBGGR8, {only(320, 240)}), raw(V4L2_PIX_FMT_UYVY, {})};
    plug();
    int modes = 0;
    for (const OVideoMode& mode : videoModes(identifier)) {
        EXPECT_EQ(request(mode), "");
        const std::string size = mode.width() ? sides(mode.width(), mode.height()) : "64x48";
        EXPECT_EQ(granted(64, 48),
                  utf8Of(mode.format()) + ' ' + size + ' ' +
                      (mode.width() ? fraction(mode.intervalNumerator(), mode.intervalDenominator())
                                    : fraction(1, 30))) // as it was before
            << text(mode);
        ++modes;
    }
    EXPECT_EQ(modes, 7);
}

TEST_F(WishesTest, WhatIsNotOnOfferIsRefusedAndTheWishBeforeStays) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {30, 15}),
                      raw(V4L2_PIX_FMT_MJPEG, {only(1280, 720)})};
    plug();
    EXPECT_EQ(request(wish("YUYV", 0, 0, 15)), "");
    const struct {
        OVideoMode wished;
        const char* words;
    } cases[] = {{wish("H264"), "H264"},
                 {wish("YUYV", 1280, 720), "YUYV 1280x720"},
                 {wish("", 800), "800 pixels wide"},
                 {wish("", 0, 600), "600 pixels high"},
                 {wish("MJPG", 1280, 720, 60), "MJPG 1280x720 at 60/s"}};
    for (const auto& one : cases)
        EXPECT_EQ(request(one.wished), std::string("Scripted Camera offers no mode that fits ") + one.words);
    EXPECT_EQ(granted(), "YUYV 640x480 1/15");
}

TEST_F(WishesTest, WhatHasNoPictureIsOnOfferOnlyByItsName) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}),
                      raw(V4L2_PIX_FMT_SBGGR8, {only(640, 480)}, 120)};
    plug();
    EXPECT_NE(request(wish("", 0, 0, 120)), "");
    EXPECT_EQ(request(wish("BA81", 0, 0, 120)), "");
    EXPECT_EQ(granted(), "BA81 640x480 1/120");
}

TEST_F(WishesTest, ASizeWithinARangeIsTakenOnItsStepsOnly) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {stepwise(16, 2048, 8)})};
    plug();
    EXPECT_NE(request(wish("", 322, 240)), "");
    EXPECT_EQ(request(wish("", 320, 240)), "");
    EXPECT_EQ(granted(640, 480), "YUYV 320x240 1/30");
    EXPECT_EQ(request(wish("", 320)), "");
    EXPECT_EQ(granted(640, 480), "YUYV 320x480 1/30") << "the other side is the automatic choice's";
}

TEST_F(WishesTest, ARateThatOneEndOfARangeHasIsListedAndTakenThere) {
    FormatScript steps = raw(V4L2_PIX_FMT_YUYV, {stepwise(64, 1024, 8)});
    steps.intervalsOf = [](const cameras::Size& size) {
        return size.width <= 320 ? std::vector<Interval>{perSecond(30), perSecond(60)}
                                 : std::vector<Interval>{perSecond(30)};
    };
    device.formats = {steps};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 1024x1024 from 64x64 by 8x8 1/30",
                                                 "YUYV 1024x1024 from 64x64 by 8x8 1/60"}));
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    EXPECT_EQ(granted(320, 240), "YUYV 320x240 1/60");
    EXPECT_EQ(granted(640, 480), "YUYV 64x64 1/60");
    EXPECT_EQ(request(wish("", 0, 240, 60)), "");
    EXPECT_EQ(granted(640, 480), "YUYV 64x240 1/60");
}

TEST_F(WishesTest, WhereTheDriverListsNothingTheWishIsTried) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {})};
    plug();
    EXPECT_EQ(request(wish("YUYV", 800, 600, 50)), "");
    EXPECT_EQ(granted(), "YUYV 800x600 1/50");
}

TEST_F(WishesTest, WhatTheDriverGrantsInsteadIsUsedAndToBeRead) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_GREY, {only(1280, 720), only(64, 48)}), {60})};
    device.adjust = [](v4l2_pix_format& pix) {
        pix.width = pix.bytesperline = 64;
        pix.height = 48;
        pix.sizeimage = 64 * 48;
    };
    device.grantInterval = [](const Interval&) { return perSecond(25); };
    plug();
    EXPECT_EQ(request(wish("", 1280, 720, 60)), "");
    EXPECT_EQ(granted(), "GREY 64x48 1/25");
}

TEST_F(WishesTest, AModeThatTheDriverWillNotStartIsRefusedInWords) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), raw(V4L2_PIX_FMT_GREY, {only(640, 480)})};
    plug();
    EXPECT_EQ(request(wish("GREY")), "");
    kernel->failNext(VIDIOC_S_FMT, EINVAL);
    EXPECT_NE(granted().find("at 640x480 (VIDIOC_S_FMT)"), std::string::npos)
        << "and no other format is tried";
    EXPECT_EQ(granted(), "GREY 640x480 1/30");
}

TEST_F(WishesTest, AWishThatTheCameraNoLongerOffersIsSaidAtTheStart) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), raw(V4L2_PIX_FMT_GREY, {only(640, 480)})};
    plug();
    EXPECT_EQ(request(wish("GREY")), "");
    discovery->remove(PATH);
    kernel->unplug(PATH);
    device.formats.pop_back();
    addBare(PATH, device); // the same camera, with other firmware
    EXPECT_EQ(granted(), "Scripted Camera (/dev/video0) offers no mode that fits GREY");
}

TEST_F(WishesTest, ARequestDoesNotTouchAStreamThatRunsAndHoldsForTheNext) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {60, 30})};
    plug();
    ASSERT_FALSE(start(640, 480, sink));
    const int before = kernel->calls(PATH, VIDIOC_S_FMT);
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(start(640, 480, second));
    EXPECT_EQ(now(), "YUYV 640x480 1/30");
    EXPECT_EQ(kernel->calls(PATH, VIDIOC_S_FMT), before);
    held->stop(second);
    held->stop(sink);
    EXPECT_EQ(granted(), "YUYV 640x480 1/60");
}

TEST_F(WishesTest, AJoinThatWantsMoreStaysWithinTheWishOfTheStream) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(1280, 720)}),
                      raw(V4L2_PIX_FMT_GREY, {only(640, 480)})};
    plug();
    EXPECT_EQ(request(wish("YUYV", 640, 480)), "");
    ASSERT_FALSE(start(320, 240, sink));
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(start(1280, 720, second));
    EXPECT_EQ(now(), "YUYV 640x480 1/30");
    EXPECT_NE(held->statistics().shared, "");
    held->stop(second);
    held->stop(sink);
    EXPECT_EQ(request(wish("YUYV")), "");
    ASSERT_FALSE(start(320, 240, sink));
    EXPECT_EQ(request(wish("GREY")), "") << "for the next stream";
    ASSERT_FALSE(start(1280, 720, second));
    EXPECT_EQ(now(), "YUYV 1280x720 1/30");
    held->stop(second);
}

TEST_F(WishesTest, AWishForSlowFramesIsNoRateThatAJoinMayNotLose) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(1280, 720)}), {30, 5})};
    plug();
    EXPECT_EQ(request(wish("", 0, 0, 5)), "");
    ASSERT_FALSE(start(640, 480, sink));
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(start(1280, 720, second));
    EXPECT_EQ(now(), "YUYV 1280x720 1/5");
    held->stop(second);
}

TEST_F(WishesTest, AWishHoldsForTheCameraThatIsPluggedInAgain) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {60, 30})};
    plug();
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    discovery->remove(PATH);
    kernel->unplug(PATH);
    addBare(PATH, device);
    EXPECT_EQ(granted(), "YUYV 640x480 1/60");
}

TEST_F(WishesTest, AWishIsOfOneCameraAlone) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {60, 30})};
    plug();
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    device.busInfo = "usb-0000:00:14.0-2";
    addBare("/dev/video2", device);
    held = provider->list().at(1);
    EXPECT_EQ(granted(), "YUYV 640x480 1/30");
}

} // namespace ostrel::tests
