// How a capture that goes wrong reaches the user, with cameras that are told to fail.
#include "apps/camera/frame_stream.h"
#include "apps/common/failure.h"

#include <ostrel/virtual_camera.h>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <set>
#include <thread>

namespace {

using namespace ostrel;
using namespace ostrel::apps;
using namespace ostrel::apps::cli;
using Result = FrameStream::Result;

const double LONG = 60; // seconds; a hang, not a measure

class FrameStreamTest : public testing::Test {
protected:
    FrameStreamTest()
        : camera_("faulty", "Faulty camera", 320, 240, 100), chosen_{"faulty", "Faulty camera", {}} {
        camera_.attach();
    }

    FrameStream open() { return FrameStream(chosen_, {320, 240}, FrameStream::Wanted::Pixels, stop_); }

    // "code: line" of the failure that the first frame meets.
    std::string failure() {
        try {
            FrameStream stream = open();
            const Result result = stream.next(frame_, LONG);
            return result == Result::Frame ? "a frame" : "no failure";
        } catch (const Failure& failure) {
            return std::to_string(failure.code()) + ": " + failure.what();
        }
    }

    OVideoTestPatternCamera camera_;
    StopRequest stop_;
    Camera chosen_;
    CapturedFrame frame_;
};

TEST_F(FrameStreamTest, FramesComeOneAfterTheOtherAndNoneTwice) {
    FrameStream stream = open();
    uint32_t last = 0;
    for (int number = 0; number < 20; ++number) {
        ASSERT_EQ(stream.next(frame_, LONG), Result::Frame);
        EXPECT_EQ(frame_.pixels.data.size(), 320U * 240 * 4);
        EXPECT_GT(frame_.facts.number(), last);
        last = frame_.facts.number();
    }
    EXPECT_EQ(stream.figures().taken, 20U);
    EXPECT_GT(stream.figures().rate(), 0);
}

TEST_F(FrameStreamTest, FramesTakeTurnsInTwoMemories) {
    FrameStream stream = open();
    std::set<const uint8_t*> memories;
    for (int number = 0; number < 8; ++number) {
        ASSERT_EQ(stream.next(frame_, LONG), Result::Frame);
        memories.insert(frame_.pixels.data.data());
    }
    EXPECT_EQ(memories.size(), 2U);
}

// Who polls gets no frame of such a camera; who waits gets its pictures all the same.
TEST_F(FrameStreamTest, PaddedRowsDoNotMatter) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_PADDED_ROWS);
    FrameStream stream = open();
    EXPECT_EQ(stream.next(frame_, LONG), Result::Frame);
    EXPECT_EQ(frame_.pixels.data.size(), 320U * 240 * 4);
}

TEST_F(FrameStreamTest, ACameraThatDoesNotOpenIsSaidAtOnceWithItsReason) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    const std::string line = failure();
    EXPECT_EQ(line.find("5: cannot use the camera 'Faulty camera': "), 0U) << line;
    EXPECT_GT(line.size(), sizeof "5: cannot use the camera 'Faulty camera': ");
    EXPECT_EQ(line.find('\n'), std::string::npos);
}

TEST_F(FrameStreamTest, ARefusedInputIsSaidLikewise) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_INPUT);
    const std::string line = failure();
    EXPECT_EQ(line.find("5: cannot use the camera 'Faulty camera': "), 0U) << line;
}

TEST_F(FrameStreamTest, ARefusedOutputIsSaidLikewise) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_OUTPUT);
    const std::string line = failure();
    EXPECT_EQ(line.find("5: cannot use the camera 'Faulty camera': "), 0U) << line;
}

TEST_F(FrameStreamTest, ACameraThatWentBeforeTheStartIsNoSuchCamera) {
    camera_.detach();
    EXPECT_EQ(
        failure(),
        "4: the camera 'Faulty camera' has gone: plug it in again, 'ostrel-camera list' shows those that are "
        "there");
}

TEST_F(FrameStreamTest, ASilentCameraTimesOut) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    FrameStream stream = open();
    EXPECT_EQ(stream.next(frame_, 0.1), Result::TimedOut);
    EXPECT_EQ(
        stream.timeoutReason(0.1),
        "no frame from 'Faulty camera' within 0.1 s: check its cable and privacy switch, or allow more time "
        "with --timeout; 'ostrel-camera doctor' examines it");
    EXPECT_EQ(stream.figures().taken, 0U);
    camera_.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_EQ(stream.next(frame_, LONG), Result::Frame);
}

TEST_F(FrameStreamTest, UnpluggingEndsTheStreamWithAReason) {
    FrameStream stream = open();
    ASSERT_EQ(stream.next(frame_, LONG), Result::Frame);
    camera_.detach();
    Result result = Result::Frame;
    while (result == Result::Frame)
        result = stream.next(frame_, LONG);
    EXPECT_EQ(result, Result::Ended);
    EXPECT_EQ(stream.endReason().find("the camera 'Faulty camera' stopped: "), 0U) << stream.endReason();
    EXPECT_GT(stream.endReason().size(), sizeof "the camera 'Faulty camera' stopped: ");
}

// Cameras that come back. Pulled out once the first frame is there.
class ResumeTest : public FrameStreamTest {
protected:
    ResumeTest() : stream_(open()) {
        EXPECT_EQ(stream_.next(frame_, LONG), Result::Frame);
        pullOut();
    }

    void pullOut() {
        camera_.detach();
        Result result = Result::Frame;
        while (result == Result::Frame)
            result = stream_.next(frame_, LONG);
        EXPECT_EQ(result, Result::Ended);
    }

    FrameStream stream_;
};

TEST_F(ResumeTest, GoesOnWithTheCameraThatCameBack) {
    const uint64_t before = stream_.figures().taken;
    std::thread hand([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        camera_.attach();
    });
    EXPECT_EQ(stream_.resume(frame_, LONG), Result::Frame);
    hand.join();
    EXPECT_EQ(stream_.figures().taken, before + 1);
    EXPECT_EQ(stream_.next(frame_, LONG), Result::Frame);
    EXPECT_GE(stream_.figures().away, 0.2);
    EXPECT_GE(stream_.figures().seconds, stream_.figures().away);
    EXPECT_LT(stream_.figures().missed, 10000U);
    EXPECT_LT(stream_.lost(), 10000U);
    pullOut();
    camera_.attach();
    EXPECT_EQ(stream_.resume(frame_, LONG), Result::Frame);
    EXPECT_EQ(stream_.figures().returns, 2U);
}

TEST_F(ResumeTest, TriesAgainWhileTheCameraCannotBeUsedYet) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    camera_.attach();
    std::thread hand([this] {
        const OVideoCameraState::RefusedAt opening = OVideoCameraState::REFUSED_AT_OPENING;
        while (OVideoCameraState("faulty").refusedAt() != opening)
            std::this_thread::yield();
        camera_.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    });
    EXPECT_EQ(stream_.resume(frame_, LONG), Result::Frame);
    hand.join();
}

TEST_F(ResumeTest, ACameraThatStaysAwayEndsItWithTheFirstReason) {
    const std::string reason = stream_.endReason();
    EXPECT_EQ(stream_.resume(frame_, 0.2), Result::Ended);
    EXPECT_EQ(stream_.endReason(), reason + "; it did not come back within 0.2 s");
    EXPECT_LT(stream_.lost(), 10000U);
}

TEST_F(ResumeTest, ASignalEndsTheWaiting) {
    raise(SIGINT);
    EXPECT_EQ(stream_.resume(frame_, 60 * LONG), Result::Stopped);
}

TEST(StreamFigures, TheRateIsThatOfTheTimeInWhichTheCameraWasThere) {
    StreamFigures figures;
    figures.taken = 61;
    figures.seconds = 12;
    EXPECT_DOUBLE_EQ(figures.rate(), 5);
    figures.taken = 62;
    figures.returns = 1;
    figures.away = 10;
    EXPECT_DOUBLE_EQ(figures.rate(), 30);
}

TEST_F(FrameStreamTest, ASignalEndsTheWaiting) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    FrameStream stream = open();
    raise(SIGINT);
    EXPECT_EQ(stream.next(frame_, LONG), Result::Stopped);
    EXPECT_EQ(stop_.signal(), SIGINT);
}

TEST(StopRequest, WaitsForADescriptorASignalOrTheTime) {
    const StopRequest stop;
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    EXPECT_FALSE(stop.wait(pipe[0], Clock::now()));
    EXPECT_FALSE(stop.wait(-1, Clock::now() + std::chrono::milliseconds(1)));
    ASSERT_EQ(write(pipe[1], "x", 1), 1);
    EXPECT_TRUE(stop.wait(pipe[0], Clock::time_point::max()));
    std::thread other([] { raise(SIGTERM); });
    EXPECT_TRUE(stop.wait(-1, Clock::now() + std::chrono::seconds(60)));
    other.join();
    EXPECT_EQ(SIGTERM, stop.signal());
    close(pipe[0]);
    close(pipe[1]);
}

TEST(StopRequest, LeavesIgnoredSignalsAloneAndGivesTheOthersBack) {
    std::signal(SIGHUP, SIG_IGN);
    {
        StopRequest stop;
        raise(SIGHUP);
        EXPECT_FALSE(stop.raised());
        raise(SIGTERM);
        EXPECT_EQ(stop.signal(), SIGTERM);
        struct sigaction second = {};
        sigaction(SIGTERM, nullptr, &second);
        EXPECT_EQ(second.sa_handler, SIG_DFL); // the second one ends the program
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
    EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_DFL);
}

} // namespace
