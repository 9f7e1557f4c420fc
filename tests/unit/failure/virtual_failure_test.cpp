#include "unit/failure/failing_allocations.h"

#include <ostrel/capture.h>
#include <ostrel/virtual_camera.h>

#include "support/camera_test.h"

#include <algorithm>
#include <memory>

using namespace ostrel;
using namespace ostrel::tests;

namespace {

const char* const CAMERA = "virtual-camera-with-an-identifier-too-long-for-the-string-itself";
const int WIDTH = 16, HEIGHT = 8;

class VirtualCameraWithoutMemory : public support::CameraTest {
protected:
    static std::unique_ptr<OVideoCaptureMacX> started() {
        auto driver = std::make_unique<OVideoCaptureMacX>();
        driver->startCapture(CAMERA, WIDTH, HEIGHT);
        driver->wait();
        return driver;
    }

    // All bytes of the newest frame, or -1.
    static int shade(OVideoCaptureMacX& driver) {
        std::vector<unsigned char> bytes;
        driver.videoFrame(bytes);
        return bytes.empty() ? -1 : bytes[0];
    }

    static std::vector<uint8_t> picture(uint8_t shade) {
        return std::vector<uint8_t>(static_cast<size_t>(WIDTH * HEIGHT * 4), shade);
    }
};

} // namespace

TEST_F(VirtualCameraWithoutMemory, TestPatternConstructed) {
    EXPECT_GE(failEachInTurn([](int n) {
                  return runFailingAt(
                      n, [] { OVideoTestPatternCamera camera(CAMERA, "A name for the pattern"); });
              }),
              3);
}

TEST_F(VirtualCameraWithoutMemory, FileConstructed) {
    EXPECT_GE(failEachInTurn([](int n) {
                  return runFailingAt(
                      n, [] { OVideoFileCamera camera(CAMERA, "A name for the file", "/no/such/file.y4m"); });
              }),
              3);
}

TEST_F(VirtualCameraWithoutMemory, PushConstructed) {
    EXPECT_GE(failEachInTurn([](int n) {
                  return runFailingAt(n, [] { OVideoPushCamera camera(CAMERA, "A name for the camera"); });
              }),
              3);
}

TEST_F(VirtualCameraWithoutMemory, AttachedOrNot) {
    EXPECT_GE(failEachInTurn([](int n) {
                  OVideoTestPatternCamera camera(CAMERA, "A name for the pattern");
                  const Outcome outcome = runFailingAt(n, [&] { camera.attach(); });
                  EXPECT_EQ(camera.isAttached(), !outcome.thrown);
                  if (outcome.thrown) {
                      EXPECT_TRUE(camera.attach());
                  }
                  return outcome;
              }),
              2);
}

TEST_F(VirtualCameraWithoutMemory, NamesRead) {
    OVideoPushCamera camera(CAMERA, "A name for the camera");
    failEachInTurn([&](int n) {
        return runFailingAt(n, [&] {
            camera.uniqueID();
            camera.name();
        });
    });
}

TEST_F(VirtualCameraWithoutMemory, APushThatFailsDoesNotHoldUpTheNext) {
    OVideoPushCamera camera(CAMERA, "A name for the camera");
    ASSERT_TRUE(camera.attach());
    const auto one = started(), two = started(); // more than one sink takes another way
    uint8_t number = 0;
    failEachInTurn(
        [&](int n) {
            const std::vector<uint8_t> first = picture(++number), second = picture(++number);
            const Outcome outcome =
                runFailingAt(n, [&] { camera.push(first.data(), WIDTH, HEIGHT, WIDTH * 4); });
            EXPECT_TRUE(camera.push(second.data(), WIDTH, HEIGHT, WIDTH * 4));
            EXPECT_EQ(shade(*one), number);
            EXPECT_EQ(shade(*two), number);
            return outcome;
        },
        Expect::PassedOnOrFrameLost);
}

TEST_F(VirtualCameraWithoutMemory, APushOfI420ThatFailsDoesNotHoldUpTheNext) {
    OVideoPushCamera camera(CAMERA, "A name for the camera");
    ASSERT_TRUE(camera.attach());
    const auto one = started(), two = started();
    std::vector<uint8_t> grey(WIDTH * HEIGHT * 3 / 2, 128);  // no colour
    std::fill_n(grey.begin(), WIDTH * HEIGHT, uint8_t(126)); // (126 - 16) * 255 / 219 = 128.1
    failEachInTurn(
        [&](int n) {
            const Outcome outcome = runFailingAt(n, [&] { camera.pushI420(grey.data(), WIDTH, HEIGHT); });
            EXPECT_TRUE(camera.pushI420(grey.data(), WIDTH, HEIGHT));
            EXPECT_NEAR(shade(*one), 128, 1);
            return outcome;
        },
        Expect::PassedOnOrFrameLost);
}

TEST_F(VirtualCameraWithoutMemory, ThePatternIsReadWithoutMemoryOrNotAtAll) {
    const std::vector<uint8_t> blank(640 * 480 * 4);
    failEachInTurn([&](int n) {
        return runFailingAt(n, [&] {
            uint32_t counter = 0, clock = 0;
            OVideoTestPatternCamera::decode(blank.data(), 640, 480, 640 * 4, counter, clock);
        });
    });
}
