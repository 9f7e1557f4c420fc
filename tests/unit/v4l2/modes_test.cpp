// Modes as drivers list them, and streams in the mode that was requested, by the calls of ostrel/modes.h.
#include "support/machine.h"
#include "unit/v4l2/listing_fixture.h"

#include "base/qt_text.h"

#include <ostrel/modes.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace ostrel {
namespace tests {

using cameras::Error;
using cameras::Interval;

namespace {

const char* const PATH = "/dev/video0";

std::string sides(int width, int height) {
    return std::to_string(width) + 'x' + std::to_string(height);
}

std::string fraction(uint32_t numerator, uint32_t denominator) {
    return std::to_string(numerator) + '/' + std::to_string(denominator);
}

// "MJPG 1280x720 1/30", with what ranges and formats without a picture have beside it.
std::string text(const OVideoMode& mode) {
    std::string all = utf8Of(mode.format()) + (mode.hasPicture() ? "" : "!");
    all += ' ' + sides(mode.width(), mode.height());
    if (mode.leastWidth() != mode.width() || mode.leastHeight() != mode.height())
        all += " from " + sides(mode.leastWidth(), mode.leastHeight()) + " by " +
               sides(mode.stepWidth(), mode.stepHeight());
    all += ' ' + fraction(mode.intervalNumerator(), mode.intervalDenominator());
    const std::string longest = fraction(mode.longestNumerator(), mode.longestDenominator());
    if (longest != fraction(mode.intervalNumerator(), mode.intervalDenominator()))
        all += " to " + longest;
    return all;
}

OVideoMode wish(const char* format, int width = 0, int height = 0, uint32_t rate = 0) {
    OVideoMode mode;
    mode.setFormat(QString::fromLatin1(format));
    mode.setSize(width, height);
    mode.setInterval(rate ? 1 : 0, rate);
    return mode;
}

class ModesTest : public ListingTest {
protected:
    const Machine machine{provider};
    DeviceScript device;
    std::shared_ptr<RecordingSink> sink = std::make_shared<RecordingSink>();
    std::shared_ptr<cameras::Camera> held; // by a capture
    QString identifier;

    ModesTest() { device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)})}; }

    void plug() {
        addBare(PATH, device);
        identifier = textOf(provider->list().at(0)->identifier());
    }
    std::vector<std::string> modes(std::string* reason = nullptr) {
        QString why = QString::fromLatin1("stale");
        std::vector<std::string> result;
        for (const OVideoMode& mode : videoModes(identifier, &why))
            result.push_back(text(mode));
        if (reason)
            *reason = utf8Of(why);
        else
            EXPECT_EQ(utf8Of(why), "");
        return result;
    }
    // Empty when it was granted.
    std::string request(const OVideoMode& mode) {
        QString why;
        const bool granted = requestVideoMode(identifier, mode, &why);
        EXPECT_EQ(granted, why.isEmpty());
        return utf8Of(why);
    }
    Error start(int width, int height, const std::shared_ptr<cameras::FrameSink>& to) {
        if (!held)
            held = provider->list().at(0);
        const Error refused = held->open();
        return refused ? refused : held->start(width, height, to);
    }
    // What a stream for a picture of this size runs in.
    std::string granted(int width = 640, int height = 480) {
        const Error refused = start(width, height, sink);
        if (refused)
            return refused.text;
        const std::string mode = now();
        held->stop(sink);
        return mode;
    }
    std::string now() const {
        const cameras::Mode mode = held->statistics().granted;
        return mode.format + ' ' + sides(mode.size.width, mode.size.height) + ' ' +
               fraction(mode.interval.numerator, mode.interval.denominator);
    }
    void TearDown() override {
        requestVideoMode(identifier, OVideoMode());
        if (held)
            held->close();
        sink->drop();
        EXPECT_EQ(kernel->mappings(), 0);
        ListingTest::TearDown();
    }
};

FormatScript withRates(FormatScript format, const std::vector<uint32_t>& rates) {
    format.intervals.clear();
    for (const uint32_t rate : rates)
        format.intervals.push_back(perSecond(rate));
    return format;
}

} // namespace

TEST_F(ModesTest, AreListedAsTheDriverDoes) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_MJPEG, {only(1280, 720), only(640, 480)}), {60, 30}),
                      raw(V4L2_PIX_FMT_SBGGR8, {only(320, 240)}, 15), raw(V4L2_PIX_FMT_H264, {only(64, 48)}),
                      raw(V4L2_PIX_FMT_Y16_BE, {only(64, 48)})};
    plug();
    EXPECT_EQ(modes(),
              (std::vector<std::string>{"MJPG 1280x720 1/60", "MJPG 1280x720 1/30", "MJPG 640x480 1/60",
                                        "MJPG 640x480 1/30", "BA81! 320x240 1/15", "H264! 64x48 1/30",
                                        "Y16-BE 64x48 1/30"}));
}

TEST_F(ModesTest, OfRangesHaveTheirEndsAndSteps) {
    FormatScript steps = raw(V4L2_PIX_FMT_YUYV, {stepwise(16, 2048, 8)});
    steps.intervalType = V4L2_FRMIVAL_TYPE_STEPWISE;
    steps.intervals = {perSecond(120), perSecond(5), perSecond(1)};
    device.formats = {steps, raw(V4L2_PIX_FMT_GREY, {stepwise(2, 64, 1)})};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 2048x2048 from 16x16 by 8x8 1/120 to 1/5",
                                                 "GREY 64x64 from 2x2 by 1x1 1/30"}));
}

TEST_F(ModesTest, WithoutSizesOrIntervalsSaySo) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {}), withRates(raw(V4L2_PIX_FMT_GREY, {only(64, 48)}), {})};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 0x0 0/0", "GREY 64x48 0/0"}));
}

TEST_F(ModesTest, WhatADriverListsTwiceOrWithoutSenseIsLeftOut) {
    FormatScript lying =
        raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(640, 480), only(0, 480), only(320, 240)});
    lying.intervals = {perSecond(30), perSecond(30), perSecond(0), perSecond(15)};
    device.formats = {lying, lying};
    plug();
    EXPECT_EQ(modes(), (std::vector<std::string>{"YUYV 640x480 1/30", "YUYV 640x480 1/15",
                                                 "YUYV 320x240 1/30", "YUYV 320x240 1/15"}));
}

TEST_F(ModesTest, OfADriverWithoutEndAreLimited) {
    device.formats.clear();
    for (uint32_t format = 0; format < 300; ++format) {
        FormatScript endless = raw(0x30303030 + format, {});
        for (int size = 1; size <= 300; ++size)
            endless.sizes.push_back(only(size, size));
        for (uint32_t rate = 1; rate <= 300; ++rate)
            endless.intervals.push_back(perSecond(rate));
        device.formats.push_back(endless);
    }
    device.formats.push_back(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}));
    addBare(PATH, device);
    cameras::v4l2::NodeFacts facts = discovery->nodes().at(0);
    const auto camera = cameras::v4l2::makeCamera(kernel, discovery, facts, "endless", "Endless");
    cameras::NativeModes all;
    EXPECT_EQ(camera->modes(all).text, "");
    EXPECT_LT(all.size(), 5000u);
    EXPECT_LT(kernel->callsOn(PATH), 10000);
}

TEST_F(ModesTest, ADriverThatBreaksOffHasToldWhatItToldAndWhy) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(320, 240)}),
                      raw(V4L2_PIX_FMT_GREY, {only(64, 48)})};
    plug();
    const size_t all = modes().size();
    ASSERT_EQ(all, 3u);
    for (const unsigned long call : {VIDIOC_ENUM_FMT, VIDIOC_ENUM_FRAMESIZES, VIDIOC_ENUM_FRAMEINTERVALS})
        for (const int number : {EIO, ENOMEM, EBUSY, EPERM, EFAULT, EAGAIN, ENODEV, ENXIO, EINVAL, ENOTTY}) {
            SCOPED_TRACE(number);
            kernel->failNext(call, number, 1, 1);
            std::string why;
            const std::vector<std::string> found = modes(&why);
            EXPECT_FALSE(found.empty());
            const char* const gone =
                number == ENODEV || number == ENXIO ? "was unplugged" : "did not tell all";
            const bool isEnd = number == EINVAL || number == ENOTTY;
            EXPECT_EQ(why.empty(), isEnd) << why;
            EXPECT_TRUE(isEnd || why.find(gone) != std::string::npos) << why;
            std::string again;
            EXPECT_EQ(modes(&again).size(), all) << "nothing of it stays";
            EXPECT_EQ(again, "");
        }
}

TEST_F(ModesTest, OfANodeThatDoesNotAnswerAreUnknownWithTheReason) {
    plug();
    const struct {
        unsigned long call;
        int number;
        const char* why;
    } cases[] = {{OPEN, EACCES, "No permission to open"}, {OPEN, EBUSY, "in use by another program"},
                 {OPEN, ENODEV, "was unplugged"},         {OPEN, EMFILE, "Cannot open"},
                 {VIDIOC_QUERYCAP, EIO, "Cannot open"},   {VIDIOC_QUERYCAP, ENODEV, "was unplugged"}};
    for (const auto& one : cases) {
        // Once for the listing of a node without a description, which has its answer.
        const auto camera = provider->list().at(0);
        kernel->failNext(one.call, one.number);
        cameras::NativeModes none;
        const Error unknown = camera->modes(none);
        EXPECT_TRUE(none.empty());
        EXPECT_NE(unknown.text.find(one.why), std::string::npos) << unknown.text;
        EXPECT_EQ(kernel->openDescriptors(), 0);
    }
}

TEST_F(ModesTest, ThatWereKnownOnceAreStillToldWhenTheNodeDoesNotAnswer) {
    plug();
    const auto camera = provider->list().at(0);
    cameras::NativeModes before, now;
    ASSERT_FALSE(camera->modes(before));
    kernel->failNext(OPEN, EBUSY);
    EXPECT_EQ(camera->modes(now).code, EBUSY);
    EXPECT_EQ(now.size(), before.size());
}

TEST_F(ModesTest, OfACameraThatStreamsAreToldWithoutACall) {
    plug();
    ASSERT_FALSE(start(640, 480, sink));
    const auto node = provider->list();
    const int before = kernel->callsOn(PATH) - kernel->calls(PATH, POLL);
    EXPECT_EQ(modes(), std::vector<std::string>{"YUYV 640x480 1/30"});
    EXPECT_EQ(request(wish("YUYV")), "");
    EXPECT_EQ(kernel->callsOn(PATH) - kernel->calls(PATH, POLL), before);
}

TEST_F(ModesTest, AreToldAtOnceWhileTheCameraOpens) {
    plug();
    const auto camera = provider->list().at(0);
    const auto gate = kernel->hold(PATH, VIDIOC_QUERYCAP);
    std::thread opener([&] { EXPECT_EQ(camera->open().text, ""); });
    gate->awaitArrivals(1);
    cameras::NativeModes none;
    const Error unknown = camera->modes(none); // would hang here
    EXPECT_NE(unknown.text.find("is being opened"), std::string::npos) << unknown.text;
    gate->open();
    opener.join();
    EXPECT_EQ(camera->modes(none).text, "");
    EXPECT_EQ(none.size(), 1u);
    camera->close();
}

TEST_F(ModesTest, AreToldToAllWhoAskWhileTheNodeIsBeingAsked) {
    plug();
    const auto camera = provider->list().at(0);
    const auto gate = kernel->hold(PATH, VIDIOC_ENUM_FMT);
    std::atomic<int> asking{0};
    std::vector<std::thread> askers;
    for (int i = 0; i < 3; ++i) {
        askers.emplace_back([&] {
            ++asking;
            cameras::NativeModes all;
            EXPECT_EQ(camera->modes(all).text, "");
            EXPECT_EQ(all.size(), 1u);
        });
        gate->awaitArrivals(1);
        while (asking <= i)
            std::this_thread::yield();
    }
    gate->open();
    for (std::thread& asker : askers)
        asker.join();
}

TEST_F(ModesTest, OfNoCameraAreNone) {
    plug();
    QString why;
    EXPECT_TRUE(videoModes(QString::fromLatin1("nobody"), &why).isEmpty());
    EXPECT_EQ(utf8Of(why), "No camera with the identifier \"nobody\" is attached");
    EXPECT_FALSE(requestVideoMode(QString::fromLatin1("nobody"), wish("YUYV"), &why));
    EXPECT_TRUE(requestVideoMode(QString::fromLatin1("nobody"), OVideoMode(), &why)) << "takes nothing back";
}

TEST_F(ModesTest, SixtyFramesASecondAreGivenWhenTheyAreAskedFor) {
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

TEST_F(ModesTest, EachPartOfAWishNarrowsTheAutomaticChoice) {
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

TEST_F(ModesTest, EveryListedModeCanBeRequestedAsItIs) {
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

TEST_F(ModesTest, WhatIsNotOnOfferIsRefusedAndTheWishBeforeStays) {
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

TEST_F(ModesTest, WhatHasNoPictureIsOnOfferOnlyByItsName) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}),
                      raw(V4L2_PIX_FMT_SBGGR8, {only(640, 480)}, 120)};
    plug();
    EXPECT_NE(request(wish("", 0, 0, 120)), "");
    EXPECT_EQ(request(wish("BA81", 0, 0, 120)), "");
    EXPECT_EQ(granted(), "BA81 640x480 1/120");
}

TEST_F(ModesTest, ASizeWithinARangeIsTakenOnItsStepsOnly) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {stepwise(16, 2048, 8)})};
    plug();
    EXPECT_NE(request(wish("", 322, 240)), "");
    EXPECT_EQ(request(wish("", 320, 240)), "");
    EXPECT_EQ(granted(640, 480), "YUYV 320x240 1/30");
    EXPECT_EQ(request(wish("", 320)), "");
    EXPECT_EQ(granted(640, 480), "YUYV 320x480 1/30") << "the other side is the automatic choice's";
}

TEST_F(ModesTest, ARateThatOneEndOfARangeHasIsListedAndTakenThere) {
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

TEST_F(ModesTest, WhereTheDriverListsNothingTheWishIsTried) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {})};
    plug();
    EXPECT_EQ(request(wish("YUYV", 800, 600, 50)), "");
    EXPECT_EQ(granted(), "YUYV 800x600 1/50");
}

TEST_F(ModesTest, WhatTheDriverGrantsInsteadIsUsedAndToBeRead) {
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

TEST_F(ModesTest, AModeThatTheDriverWillNotStartIsRefusedInWords) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), raw(V4L2_PIX_FMT_GREY, {only(640, 480)})};
    plug();
    EXPECT_EQ(request(wish("GREY")), "");
    kernel->failNext(VIDIOC_S_FMT, EINVAL);
    EXPECT_NE(granted().find("at 640x480 (VIDIOC_S_FMT)"), std::string::npos)
        << "and no other format is tried";
    EXPECT_EQ(granted(), "GREY 640x480 1/30");
}

TEST_F(ModesTest, AWishThatTheCameraNoLongerOffersIsSaidAtTheStart) {
    device.formats = {raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), raw(V4L2_PIX_FMT_GREY, {only(640, 480)})};
    plug();
    EXPECT_EQ(request(wish("GREY")), "");
    discovery->remove(PATH);
    kernel->unplug(PATH);
    device.formats.pop_back();
    addBare(PATH, device); // the same camera, with other firmware
    EXPECT_EQ(granted(), "Scripted Camera (/dev/video0) offers no mode that fits GREY");
}

TEST_F(ModesTest, ARequestDoesNotTouchAStreamThatRunsAndHoldsForTheNext) {
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

TEST_F(ModesTest, AJoinThatWantsMoreStaysWithinTheWishOfTheStream) {
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

TEST_F(ModesTest, AWishForSlowFramesIsNoRateThatAJoinMayNotLose) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480), only(1280, 720)}), {30, 5})};
    plug();
    EXPECT_EQ(request(wish("", 0, 0, 5)), "");
    ASSERT_FALSE(start(640, 480, sink));
    const auto second = std::make_shared<RecordingSink>();
    ASSERT_FALSE(start(1280, 720, second));
    EXPECT_EQ(now(), "YUYV 1280x720 1/5");
    held->stop(second);
}

TEST_F(ModesTest, AWishHoldsForTheCameraThatIsPluggedInAgain) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {60, 30})};
    plug();
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    discovery->remove(PATH);
    kernel->unplug(PATH);
    addBare(PATH, device);
    EXPECT_EQ(granted(), "YUYV 640x480 1/60");
}

TEST_F(ModesTest, AWishIsOfOneCameraAlone) {
    device.formats = {withRates(raw(V4L2_PIX_FMT_YUYV, {only(640, 480)}), {60, 30})};
    plug();
    EXPECT_EQ(request(wish("", 0, 0, 60)), "");
    device.busInfo = "usb-0000:00:14.0-2";
    addBare("/dev/video2", device);
    held = provider->list().at(1);
    EXPECT_EQ(granted(), "YUYV 640x480 1/30");
}

} // namespace tests
} // namespace ostrel
