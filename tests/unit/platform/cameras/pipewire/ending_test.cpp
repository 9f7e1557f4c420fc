// Everything beside the camera that can go: the session manager, the daemon, the program behind the camera.
#include "unit/platform/cameras/pipewire/pipewire_test.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pipewire/capture_stream.h"
#include "platform/cameras/stall_watch.h"

#include <cerrno>
#include <csignal>

namespace ostrel::tests {

using cameras::pipewire::Remote;
using support::PipeWireCamera;
using support::RecordingSink;

class PipeWireEnding : public PipeWireTest {
protected:
    // Stops and closes, in so many milliseconds.
    int64_t millisecondsToStop() {
        const int64_t begin = monotonicNanoseconds();
        camera->stop(sink);
        camera->close();
        return (monotonicNanoseconds() - begin) / NANOSECONDS_PER_MILLISECOND;
    }
    bool contains(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
};

TEST_F(PipeWireEnding, ACameraThatLeavesBesideAnotherEndsTheStream) {
    const PipeWireCamera other("other");
    PipeWireCamera one("one");
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    one.unplug();
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_EQ(sink->why().code, ENODEV);
    EXPECT_EQ(sink->why().text, "one (PipeWire) was unplugged");
    const int frames = sink->frames();
    EXPECT_EQ(names(), Words({"other"}));
    EXPECT_EQ(sink->frames(), frames) << "no frame of the other camera in its place";
}

TEST_F(PipeWireEnding, ADaemonThatIsKilledEndsTheStreamAndTheCamera) {
    const PipeWireCamera one("one");
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    session.daemon().end(SIGKILL);
    ASSERT_TRUE(sink->waitForEnd());
    EXPECT_TRUE(contains(sink->why().text, "PipeWire has ended")) << sink->why().text;
    EXPECT_FALSE(camera->attached());
    EXPECT_LT(millisecondsToStop(), 1000);
    EXPECT_TRUE(names().empty());
}

TEST_F(PipeWireEnding, ANewDaemonsCamerasAreUsedWithoutMoreAdo) {
    {
        const PipeWireCamera one("one");
        ASSERT_EQ(start("one").text, "");
        ASSERT_TRUE(sink->waitForFrames(2));
        session.daemon().end(SIGTERM);
        ASSERT_TRUE(sink->waitForEnd());
        camera->close();
        session.startDaemon();
        session.startManager();
    }
    const PipeWireCamera again("one");
    sink = std::make_shared<RecordingSink>();
    ASSERT_EQ(start("one").text, "");
    EXPECT_TRUE(sink->waitForFrames(2));
}

TEST_F(PipeWireEnding, NeitherAStoppedDaemonNorAStoppedProgramHoldsUpAStop) {
    PipeWireCamera one("one");
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    session.daemon().kill(SIGSTOP);
    EXPECT_LT(millisecondsToStop(), 1000);
    session.daemon().kill(SIGCONT);
    sink = std::make_shared<RecordingSink>();
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    one.program().kill(SIGSTOP);
    EXPECT_LT(millisecondsToStop(), 1000);
}

TEST_F(PipeWireEnding, ACameraThatStallsIsStartedAgainAndGoesOn) {
    const int64_t before = cameras::StallWatch::leastPause.exchange(300000000);
    PipeWireCamera one("one");
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    one.program().tell("hold");
    ASSERT_TRUE(comesTrue([&] { return camera->statistics().restarts > 0; }));
    EXPECT_TRUE(contains(camera->statistics().stalled, "sends no frames"));
    one.program().tell("go");
    EXPECT_TRUE(sink->waitForMoreFrames(5));
    EXPECT_TRUE(comesTrue([&] { return camera->statistics().stalled.empty(); }));
    EXPECT_TRUE(sink->ends().empty());
    cameras::StallWatch::leastPause = before;
}

TEST_F(PipeWireEnding, WithoutASessionManagerNoCameraStartsAndTheWordsSayWhy) {
    const PipeWireCamera one("one");
    session.manager().end(SIGKILL);
    const cameras::Error refused = start("one");
    EXPECT_EQ(refused.code, ENOLINK);
    EXPECT_EQ(refused.text,
              "PipeWire offers one (PipeWire), but nobody connects this program with it: is a session "
              "manager (wireplumber) running?");
    session.startManager();
    ASSERT_EQ(camera->start(640, 480, sink).text, "");
    EXPECT_TRUE(sink->waitForFrames(2));
}

TEST_F(PipeWireEnding, ASessionManagerThatComesBackBringsTheFramesBack) {
    const int64_t before = cameras::StallWatch::leastPause.exchange(500000000);
    const PipeWireCamera one("one");
    ASSERT_EQ(start("one").text, "");
    ASSERT_TRUE(sink->waitForFrames(2));
    session.manager().end(SIGKILL);
    ASSERT_TRUE(comesTrue([&] { return camera->statistics().restarts > 0; }));
    EXPECT_TRUE(sink->ends().empty()) << "silence is no end";
    session.startManager();
    EXPECT_TRUE(sink->waitForMoreFrames(10));
    cameras::StallWatch::leastPause = before;
}

TEST_F(PipeWireEnding, ADaemonThatDoesNotAnswerRefusesInWords) {
    const PipeWireCamera one("one");
    camera = listed("one");
    Remote::timeout = 100000000;
    session.daemon().kill(SIGSTOP);
    const cameras::Error refused = camera->open();
    EXPECT_EQ(refused.code, ETIMEDOUT);
    EXPECT_EQ(refused.text, "PipeWire, which has one (PipeWire), does not answer");
    EXPECT_TRUE(camera->attached()) << "as far as anybody knows";
    session.daemon().kill(SIGCONT);
}

// Only a driver's refusal arrives as a number within words.
TEST(PipeWireErrors, TheNumberIsReadFromTheWordsOfALink) {
    using cameras::pipewire::errnoIn;
    EXPECT_EQ(errnoIn("error set output format: -16 (Device or resource busy)", EIO), EBUSY);
    EXPECT_EQ(errnoIn("v4l2-source: error set input format: -28 (No space left on device)", EIO), ENOSPC);
    EXPECT_EQ(errnoIn("no node available", EAGAIN), EAGAIN);
    EXPECT_EQ(errnoIn("-1234567890123 (what)", EIO), EIO);
    EXPECT_EQ(errnoIn(nullptr, EIO), EIO);
}

} // namespace ostrel::tests
