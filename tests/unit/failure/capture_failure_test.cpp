#include "unit/failure/failing_allocations.h"

#include <ostrel/statistics.h>

#include "support/leaks.h"
#include "unit/capture/driver_test.h"

using namespace ostrel;
using namespace ostrel::tests;

namespace {

const char* const CAMERA = "camera-with-an-identifier-too-long-for-the-string-object-itself";

class CaptureWithoutMemory : public support::DriverTest {
protected:
    void SetUp() override { camera_ = attach(CAMERA); }

    // One frame, and that it is the one.
    void expectPicture(OVideoCaptureMacX& driver, uint32_t number) {
        camera_->deliver(number);
        EXPECT_EQ(support::numberIn(poll(driver)), static_cast<int>(number));
    }

    std::shared_ptr<support::ScriptedCamera> camera_;
};

} // namespace

TEST_F(CaptureWithoutMemory, TheCaptureObject) {
    EXPECT_GE(failEachInTurn([](int n) {
                  const support::KeptByDesign session; // of a driver that was never started
                  return runFailingAt(n, [] { OVideoCaptureUnix::ptr(); });
              }),
              3);
}

// A start that went well is left out: it keeps the session's framework objects.
TEST_F(CaptureWithoutMemory, AStartThatFailedCanBeDropped) {
    started(CAMERA, 16, 8);
    int n = 1;
    for (bool thrown = true; thrown; ++n) {
        const Leftovers leftovers;
        {
            OVideoCaptureMacX driver;
            thrown = runFailingAt(n, [&] { start(driver, CAMERA, 16, 8); }).thrown;
        }
        if (thrown) {
            EXPECT_LE(leftovers.blocks(), 0) << "allocation " << n;
        }
    }
    EXPECT_GE(n, 6);
}

// Of the larger size, the driver's buffer and the picture are mappings.
TEST_F(CaptureWithoutMemory, AStartThatFailedCanBeRepeated) {
    for (const int width : {16, 640}) {
        const int height = width * 3 / 4;
        const auto attempt = [&](int n) {
            OVideoCaptureMacX driver;
            const Outcome outcome = runFailingAt(n, [&] { start(driver, CAMERA, width, height); });
            if (outcome.thrown)
                start(driver, CAMERA, width, height);
            expectPicture(driver, static_cast<uint32_t>(n % 1000));
            return outcome;
        };
        EXPECT_GE(failEachInTurn(attempt), 4) << width;
    }
}

TEST_F(CaptureWithoutMemory, ReadingALargeFrame) {
    EXPECT_GE(failEachInTurn(
                  [&](int n) {
                      const auto driver = started(CAMERA, 640, 480); // without a picture to use again
                      camera_->deliver(7);
                      VideoFrame frame;
                      const Outcome outcome = runFailingAt(n, [&] { driver->selfVideoFrame(frame); });
                      camera_->deliver(8);
                      driver->selfVideoFrame(frame);
                      EXPECT_EQ(support::numberIn(frame.data), 8);
                      return outcome;
                  },
                  Expect::PassedOnOrFrameLost),
              2);
}

TEST_F(CaptureWithoutMemory, ReadingAFrameAsBytes) {
    const auto driver = started(CAMERA, 16, 8);
    EXPECT_GE(failEachInTurn(
                  [&](int n) {
                      camera_->deliver(5);
                      std::vector<unsigned char> bytes;
                      const Outcome outcome = runFailingAt(n, [&] { driver->videoFrame(bytes); });
                      EXPECT_EQ(support::numberIn(poll(*driver)), 5);
                      return outcome;
                  },
                  Expect::PassedOnOrFrameLost),
              1);
}

TEST_F(CaptureWithoutMemory, ReadingAFrameAsARecord) {
    const auto driver = started(CAMERA, 16, 8);
    EXPECT_GE(failEachInTurn(
                  [&](int n) {
                      camera_->deliver(6);
                      VideoFrame frame = marked();
                      const Outcome outcome = runFailingAt(n, [&] { driver->selfVideoFrame(frame); });
                      if (outcome.thrown) { // by the vector: what comes before it is there, the rest is not
                          EXPECT_EQ(frame.width, 16);
                          EXPECT_EQ(frame.height, 8);
                          EXPECT_NE(frame.timestamp, marked().timestamp);
                          EXPECT_EQ(frame.frameNumber, marked().frameNumber);
                          EXPECT_EQ(frame.formatId, marked().formatId);
                      }
                      VideoFrame again;
                      driver->selfVideoFrame(again);
                      EXPECT_EQ(support::numberIn(again.data), 6);
                      return outcome;
                  },
                  Expect::PassedOnOrFrameLost),
              1);
}

TEST_F(CaptureWithoutMemory, Statistics) {
    const auto driver = started(CAMERA, 16, 8);
    failEachInTurn([&](int n) {
        OVideoStatistics figures;
        const Outcome outcome = runFailingAt(n, [&] { videoStatistics(CAMERA, figures); });
        EXPECT_TRUE(videoStatistics(CAMERA, figures));
        return outcome;
    });
}
