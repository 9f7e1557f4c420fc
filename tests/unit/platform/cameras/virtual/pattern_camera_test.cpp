// The test pattern camera as a capture sees it.
#include "capture_fixture.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/virtual/frame_schedule.h"

#include <ostrel/modes.h>
#include <ostrel/processing.h>

#include <cmath>
#include <limits>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

class PatternCamera : public PatternFixture {};

TEST_F(PatternCamera, CountsFromOneAndStampsTheClock) {
    std::vector<Reading> readings;
    sink->onFrame = [&](const RecordingSink::FramePointer& frame) { readings.push_back(read(frame)); };
    const uint32_t before = OVideoCommon::get_time();
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(20));
    camera->stop(sink);
    const uint32_t after = OVideoCommon::get_time();
    ASSERT_TRUE(readings.front().decoded);
    EXPECT_GE(readings.front().counter, 1u);
    uint32_t last = 0;
    for (const Reading& reading : readings) {
        ASSERT_TRUE(reading.decoded);
        EXPECT_GT(reading.counter, last);
        EXPECT_LE(reading.clock - before, after - before);
        last = reading.counter;
    }
}

TEST_F(PatternCamera, ANewStreamCountsFromTheBeginningAgain) {
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(30));
    camera->stop(sink);
    const uint32_t reached = read(sink->newest()).counter;
    EXPECT_GE(reached, 30u);
    uint32_t first = 0;
    auto again = std::make_shared<RecordingSink>();
    const int64_t started = monotonicNanoseconds();
    int64_t arrived = 0;
    again->onFrame = [&](const RecordingSink::FramePointer& frame) {
        if (first == 0) {
            arrived = monotonicNanoseconds();
            first = read(frame).counter;
        }
    };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, again));
    ASSERT_TRUE(again->waitForFrames(2));
    camera->stop(again);
    EXPECT_GE(first, 1u);
    EXPECT_LE(first, 1 + (arrived - started) / 1000000) << "1 on a machine that is not busy";
}

TEST_F(PatternCamera, DrawsNothingUntilAFrameIsTaken) {
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(10));
    EXPECT_EQ(virtualCamera->framesTaken(), 0u);
    EXPECT_GE(virtualCamera->framesDelivered(), 10u);
    EXPECT_TRUE(read(sink->newest()).decoded);
    EXPECT_EQ(virtualCamera->framesTaken(), 1u);
    EXPECT_TRUE(read(sink->newest(), 640, 480).decoded);
    EXPECT_EQ(virtualCamera->framesTaken(), 2u);
    camera->stop(sink);
    const cameras::StreamStatistics figures = camera->statistics();
    EXPECT_EQ(figures.taken, 2u);
    EXPECT_EQ(figures.delivered, virtualCamera->framesDelivered());
    EXPECT_EQ(figures.delivered, static_cast<uint64_t>(sink->frames()));
}

TEST_F(PatternCamera, SaysWhatItRunsAt) {
    EXPECT_EQ(camera->statistics().granted.format, "") << "no stream yet";
    ASSERT_FALSE(camera->start(1280, 720, sink));
    const cameras::StreamStatistics figures = camera->statistics();
    EXPECT_EQ(figures.granted.format, "BGRA");
    EXPECT_EQ(figures.granted.size.width, WIDTH);
    EXPECT_EQ(figures.granted.size.height, HEIGHT);
    EXPECT_EQ(figures.granted.rate(), 1000.0);
    EXPECT_EQ(figures.ended, "");
    camera->stop(sink);
    EXPECT_EQ(camera->statistics().granted.format, "BGRA") << "the figures stay after the stop";
}

TEST_F(PatternCamera, FramesHeldStayConvertibleAfterStopCloseAndDetach) {
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    camera->stop(sink);
    camera->close();
    virtualCamera.reset();
    camera.reset();
    const Reading first = read(sink->newest()), again = read(sink->newest(), 1280, 720);
    EXPECT_TRUE(first.decoded);
    EXPECT_TRUE(again.decoded);
    EXPECT_EQ(again.counter, first.counter);
}

TEST_F(PatternCamera, NoFrameComesBeforeItIsDue) {
    std::vector<std::pair<int64_t, RecordingSink::FramePointer>> frames;
    sink->onFrame = [&](const RecordingSink::FramePointer& frame) {
        frames.emplace_back(monotonicNanoseconds(), frame);
    };
    const int64_t started = monotonicNanoseconds();
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(100));
    camera->stop(sink);
    for (const auto& [arrival, frame] : frames)
        ASSERT_GE(arrival, started + (read(frame).counter - int64_t(1)) * 1000000);
}

TEST_F(PatternCamera, ADeliveryThatFallsBehindSkipsToTheNewestAndNeverCatchesUpInABurst) {
    std::vector<uint32_t> counters;
    sink->onFrame = [&](const RecordingSink::FramePointer& frame) {
        counters.push_back(read(frame).counter);
        if (counters.size() == 5) { // sixty frames' time
            const int64_t until = monotonicNanoseconds() + 60 * 1000000;
            while (monotonicNanoseconds() < until)
                std::this_thread::yield();
        }
    };
    ASSERT_FALSE(camera->start(WIDTH, HEIGHT, sink));
    ASSERT_TRUE(sink->waitForFrames(8));
    camera->stop(sink);
    ASSERT_GE(counters.size(), 6u);
    EXPECT_GE(counters[5], counters[4] + 60);
    const cameras::StreamStatistics figures = camera->statistics();
    EXPECT_GE(figures.skipped, 59u);
    // Every frame is delivered or skipped, once; the stop may come between the one and the other.
    EXPECT_GE(figures.delivered + figures.skipped, counters.back());
    EXPECT_LT(figures.delivered + figures.skipped, counters.back() + 59);
}

TEST_F(PatternCamera, ScalesToTheSizeAskedFor) {
    ASSERT_FALSE(camera->start(1280, 720, sink));
    ASSERT_TRUE(sink->waitForFrames(1));
    for (const auto& size : {std::pair<int, int>(160, 120), {320, 240}, {640, 480}, {1280, 720}, {333, 777}})
        EXPECT_TRUE(read(sink->newest(), size.first, size.second).decoded)
            << size.first << " x " << size.second;
}

cameras::StreamStatistics granted(int width, int height, double rate) {
    OVideoTestPatternCamera virtualCamera(QString::fromLatin1("clamped"), QString(), width, height, rate);
    virtualCamera.attach();
    const auto camera = listed("clamped");
    const auto sink = std::make_shared<RecordingSink>();
    EXPECT_FALSE(camera->open());
    EXPECT_FALSE(camera->start(320, 240, sink));
    const cameras::StreamStatistics result = camera->statistics();
    camera->stop(sink);
    camera->close();
    return result;
}

TEST(PatternCameraLimits, SizesAreClampedAndMadeEven) {
    EXPECT_EQ(granted(0, 0, 30).granted.size.width, 16);
    EXPECT_EQ(granted(-5, std::numeric_limits<int>::min(), 30).granted.size.height, 16);
    EXPECT_EQ(granted(9000, 16, 30).granted.size.width, 8192);
    EXPECT_EQ(granted(16, std::numeric_limits<int>::max(), 30).granted.size.height, 8192);
    EXPECT_EQ(granted(321, 16, 30).granted.size.width, 320);
    EXPECT_EQ(granted(17, 16, 30).granted.size.width, 16);
}

TEST(PatternCameraLimits, RatesAreClamped) {
    EXPECT_EQ(granted(320, 240, 1e9).granted.rate(), 1000);
    EXPECT_EQ(granted(320, 240, std::numeric_limits<double>::infinity()).granted.rate(), 1000);
    EXPECT_EQ(granted(320, 240, 0).granted.rate(), 0.001);
    EXPECT_EQ(granted(320, 240, -30).granted.rate(), 0.001);
    EXPECT_EQ(granted(320, 240, std::nan("")).granted.rate(), 0.001);
    EXPECT_EQ(granted(320, 240, 29.97).granted.rate(), 29.97);
}

// "640x480 at 60" of a stream with this wish; the reason where it is refused.
std::string grantedMode(const OVideoMode& wish) {
    OVideoTestPatternCamera source(QString::fromLatin1("modes"), QString::fromLatin1("Modes"), 352, 288, 24);
    EXPECT_TRUE(source.attach());
    QString why;
    if (!requestVideoMode(source.uniqueID(), wish, &why))
        return why.toUtf8().constData();
    const auto camera = listed("modes");
    const auto sink = std::make_shared<RecordingSink>();
    uint32_t decoded = 0;
    sink->onFrame = [&](const RecordingSink::FramePointer& frame) { decoded += read(frame).decoded; };
    EXPECT_FALSE(camera->open());
    EXPECT_FALSE(camera->start(160, 120, sink));
    EXPECT_TRUE(sink->waitForFrames(2));
    const cameras::Mode granted = camera->statistics().granted;
    camera->close();
    EXPECT_GE(decoded, 2u);
    requestVideoMode(source.uniqueID(), OVideoMode());
    return std::to_string(granted.size.width) + 'x' + std::to_string(granted.size.height) + " at " +
           QString::number(granted.rate()).toStdString();
}

OVideoMode wishFor(int width, int height, uint32_t rate, const char* format = "") {
    OVideoMode wish;
    wish.setSize(width, height);
    wish.setInterval(rate ? 1 : 0, rate);
    wish.setFormat(QString::fromLatin1(format));
    return wish;
}

TEST(PatternCameraModes, WithoutAWishItKeepsItsOwn) {
    EXPECT_EQ(grantedMode(OVideoMode()), "352x288 at 24");
    EXPECT_EQ(grantedMode(wishFor(0, 0, 0, "BGRA")), "352x288 at 24");
}

TEST(PatternCameraModes, WhatAWishLeavesOpenStaysItsOwn) {
    EXPECT_EQ(grantedMode(wishFor(640, 480, 0)), "640x480 at 24");
    EXPECT_EQ(grantedMode(wishFor(0, 0, 60)), "352x288 at 60");
    EXPECT_EQ(grantedMode(wishFor(0, 1080, 15)), "1920x1080 at 15");
}

TEST(PatternCameraModes, OthersThanItOffersAreRefused) {
    EXPECT_EQ(grantedMode(wishFor(641, 480, 0)), "Modes offers no mode that fits 641x480");
    EXPECT_EQ(grantedMode(wishFor(0, 0, 120)), "Modes offers no mode that fits at 120/s");
    EXPECT_EQ(grantedMode(wishFor(0, 0, 0, "YUYV")), "Modes offers no mode that fits YUYV");
}

TEST(PatternCameraModes, AreItsOwnSizeAndRateAndAFewOthersEachOnce) {
    OVideoTestPatternCamera source(QString::fromLatin1("modes"), QString::fromLatin1("Modes"), 640, 480, 30);
    ASSERT_TRUE(source.attach());
    const QList<OVideoMode> modes = videoModes(source.uniqueID());
    ASSERT_EQ(modes.size(), 4 * 3);
    EXPECT_EQ(modes[0].width(), 640);
    EXPECT_EQ(modes[0].framesPerSecond(), 30);
    EXPECT_TRUE(modes[0].hasPicture());
}

TEST(FrameSchedule, DoesNotDriftInAYear) {
    const cameras::FrameSchedule schedule(5000, 30000.0 / 1001);
    const uint64_t frames = 30000ull * 31536; // 1001 frames' time for each 30000: one year and a bit
    EXPECT_NEAR(static_cast<double>(schedule.due(frames) - 5000), 1001.0 * 31536 * 1e9, 1000);
}

TEST(FrameSchedule, TheNewestFrameIsTheLastOneThatIsDue) {
    for (const double rate : {0.001, 1.0, 24.0, 29.97, 30.0, 59.94, 999.0, 1000.0}) {
        const cameras::FrameSchedule schedule(123456789, rate);
        for (uint64_t frame = 0; frame < 3000; ++frame) {
            ASSERT_EQ(schedule.newest(schedule.due(frame), 0), frame) << rate;
            ASSERT_EQ(schedule.newest(schedule.due(frame + 1) - 1, 0), frame) << rate;
            ASSERT_EQ(schedule.newest(schedule.due(frame), frame + 5), frame + 5) << "never one before";
        }
        EXPECT_EQ(schedule.newest(0, 0), 0u) << "before the start";
    }
}

} // namespace
