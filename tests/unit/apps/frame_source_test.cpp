// How a capture that goes wrong reaches the user, with cameras that are told to fail.
#include "apps/camera/frame_source.h"
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
using Result = FrameSource::Result;

const double LONG = 60; // seconds; a hang, not a measure

class FrameSourceTest : public testing::Test {
protected:
    FrameSourceTest()
        : camera_("faulty", "Faulty camera", 320, 240, 100), chosen_{"faulty", "Faulty camera", {}} {
        camera_.attach();
    }

    FrameSource open() { return FrameSource(chosen_, {320, 240}, stop_); }

    // "code: line" of the failure that the first frame meets.
    std::string failure() {
        try {
            FrameSource source = open();
            const Result result = source.next(frame_, LONG);
            return result == Result::Frame ? "a frame" : "no failure";
        } catch (const Failure& failure) {
            return std::to_string(failure.code()) + ": " + failure.what();
        }
    }

    OVideoTestPatternCamera camera_;
    StopRequest stop_;
    Camera chosen_;
    VideoFrame frame_;
};

TEST_F(FrameSourceTest, FramesComeOneAfterTheOtherAndNoneTwice) {
    FrameSource source = open();
    uint32_t last = 0;
    for (int number = 0; number < 20; ++number) {
        ASSERT_EQ(Result::Frame, source.next(frame_, LONG));
        EXPECT_EQ(320U * 240 * 4, frame_.data.size());
        EXPECT_GT(frame_.frameNumber, last);
        last = frame_.frameNumber;
    }
    EXPECT_EQ(20U, source.figures().taken);
    EXPECT_GT(source.figures().rate(), 0);
}

TEST_F(FrameSourceTest, FramesTakeTurnsInTwoMemories) {
    FrameSource source = open();
    std::set<const uint8_t*> memories;
    for (int number = 0; number < 8; ++number) {
        ASSERT_EQ(Result::Frame, source.next(frame_, LONG));
        memories.insert(frame_.data.data());
    }
    EXPECT_EQ(2U, memories.size());
}

// Who polls gets no frame of such a camera; who waits gets its pictures all the same.
TEST_F(FrameSourceTest, PaddedRowsDoNotMatter) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_PADDED_ROWS);
    FrameSource source = open();
    EXPECT_EQ(Result::Frame, source.next(frame_, LONG));
    EXPECT_EQ(320U * 240 * 4, frame_.data.size());
}

TEST_F(FrameSourceTest, ACameraThatDoesNotOpenIsSaidAtOnceWithItsReason) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    const std::string line = failure();
    EXPECT_EQ(0U, line.find("5: cannot use the camera 'Faulty camera': ")) << line;
    EXPECT_GT(line.size(), sizeof "5: cannot use the camera 'Faulty camera': ");
    EXPECT_EQ(std::string::npos, line.find('\n'));
}

TEST_F(FrameSourceTest, ARefusedInputIsSaidLikewise) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_INPUT);
    const std::string line = failure();
    EXPECT_EQ(0U, line.find("5: cannot use the camera 'Faulty camera': ")) << line;
}

TEST_F(FrameSourceTest, ARefusedOutputIsSaidLikewise) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_OUTPUT);
    const std::string line = failure();
    EXPECT_EQ(0U, line.find("5: cannot use the camera 'Faulty camera': ")) << line;
}

TEST_F(FrameSourceTest, ACameraThatWentBeforeTheStartIsNoSuchCamera) {
    camera_.detach();
    EXPECT_EQ(
        "4: the camera 'Faulty camera' has gone: plug it in again, 'ostrel-camera list' shows those that are "
        "there",
        failure());
}

TEST_F(FrameSourceTest, ASilentCameraTimesOut) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    FrameSource source = open();
    EXPECT_EQ(Result::TimedOut, source.next(frame_, 0.1));
    EXPECT_EQ(
        "no frame from 'Faulty camera' within 0.1 s: check its cable and privacy switch, or allow more time "
        "with --timeout; 'ostrel-camera doctor' examines it",
        source.timeoutReason(0.1));
    EXPECT_EQ(0U, source.figures().taken);
    camera_.setFault(VIRTUAL_CAMERA_FAULT_NONE);
    EXPECT_EQ(Result::Frame, source.next(frame_, LONG));
}

TEST_F(FrameSourceTest, UnpluggingEndsTheStreamWithAReason) {
    FrameSource source = open();
    ASSERT_EQ(Result::Frame, source.next(frame_, LONG));
    camera_.detach();
    Result result = Result::Frame;
    while (result == Result::Frame)
        result = source.next(frame_, LONG);
    EXPECT_EQ(Result::Ended, result);
    EXPECT_EQ(0U, source.endReason().find("the camera 'Faulty camera' stopped: ")) << source.endReason();
    EXPECT_GT(source.endReason().size(), sizeof "the camera 'Faulty camera' stopped: ");
}

// Cameras that come back. Pulled out once the first frame is there.
class ResumeTest : public FrameSourceTest {
protected:
    ResumeTest() : source_(open()) {
        EXPECT_EQ(Result::Frame, source_.next(frame_, LONG));
        pullOut();
    }

    void pullOut() {
        camera_.detach();
        Result result = Result::Frame;
        while (result == Result::Frame)
            result = source_.next(frame_, LONG);
        EXPECT_EQ(Result::Ended, result);
    }

    FrameSource source_;
};

TEST_F(ResumeTest, GoesOnWithTheCameraThatCameBack) {
    const uint64_t before = source_.figures().taken;
    std::thread hand([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        camera_.attach();
    });
    EXPECT_EQ(Result::Frame, source_.resume(frame_, LONG));
    hand.join();
    EXPECT_EQ(before + 1, source_.figures().taken);
    EXPECT_EQ(Result::Frame, source_.next(frame_, LONG));
    EXPECT_GE(source_.figures().away, 0.2);
    EXPECT_GE(source_.figures().seconds, source_.figures().away);
    EXPECT_LT(source_.figures().missed, 10000U);
    EXPECT_LT(source_.lost(), 10000U);
    pullOut();
    camera_.attach();
    EXPECT_EQ(Result::Frame, source_.resume(frame_, LONG));
    EXPECT_EQ(2U, source_.figures().returns);
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
    EXPECT_EQ(Result::Frame, source_.resume(frame_, LONG));
    hand.join();
}

TEST_F(ResumeTest, ACameraThatStaysAwayEndsItWithTheFirstReason) {
    const std::string reason = source_.endReason();
    EXPECT_EQ(Result::Ended, source_.resume(frame_, 0.2));
    EXPECT_EQ(reason + "; it did not come back within 0.2 s", source_.endReason());
    EXPECT_LT(source_.lost(), 10000U);
}

TEST_F(ResumeTest, ASignalEndsTheWaiting) {
    raise(SIGINT);
    EXPECT_EQ(Result::Stopped, source_.resume(frame_, 60 * LONG));
}

TEST(StreamFigures, TheRateIsThatOfTheTimeInWhichTheCameraWasThere) {
    StreamFigures figures;
    figures.taken = 61;
    figures.seconds = 12;
    EXPECT_DOUBLE_EQ(5, figures.rate());
    figures.taken = 62;
    figures.returns = 1;
    figures.away = 10;
    EXPECT_DOUBLE_EQ(30, figures.rate());
}

TEST_F(FrameSourceTest, ASignalEndsTheWaiting) {
    camera_.setFault(VIRTUAL_CAMERA_FAULT_STALL);
    FrameSource source = open();
    raise(SIGINT);
    EXPECT_EQ(Result::Stopped, source.next(frame_, LONG));
    EXPECT_EQ(SIGINT, stop_.signal());
}

TEST(StopRequest, LeavesIgnoredSignalsAloneAndGivesTheOthersBack) {
    std::signal(SIGHUP, SIG_IGN);
    {
        StopRequest stop;
        raise(SIGHUP);
        EXPECT_FALSE(stop.raised());
        raise(SIGTERM);
        EXPECT_EQ(SIGTERM, stop.signal());
        struct sigaction second = {};
        sigaction(SIGTERM, nullptr, &second);
        EXPECT_EQ(SIG_DFL, second.sa_handler); // the second one ends the program
    }
    EXPECT_EQ(SIG_IGN, std::signal(SIGHUP, SIG_DFL));
    EXPECT_EQ(SIG_DFL, std::signal(SIGINT, SIG_DFL));
}

} // namespace
