#include "driver_test.h"

using namespace ostrel;
using support::numberIn;

namespace {
using FastFeeder = support::DriverTest;
constexpr int READS = 20000;
constexpr int DIFFERENT_FRAMES =
    500; // of which so many are to be seen, or a busy machine makes the test easy
} // namespace

TEST_F(FastFeeder, NoReadIsTornOrOlderThanAFrameDeliveredBeforeIt) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 32, 24);
    const support::Feeder feeder(camera);
    feeder.awaitMore(1);
    VideoFrame frame;
    uint32_t counterBefore = 0;
    int numberBefore = 0;
    int different = 0;
    for (int i = 0; i < READS || different < DIFFERENT_FRAMES; ++i) {
        if (i % 32 == 0)
            std::this_thread::yield();
        const int delivered = static_cast<int>(feeder.delivered());
        driver->selfVideoFrame(frame);
        const int number = numberIn(frame.data);
        ASSERT_NE(number, -1) << "torn at read " << i;
        ASSERT_GE(number, delivered) << "older than a frame delivered before at read " << i;
        ASSERT_GE(number, numberBefore);
        ASSERT_GE(frame.frameNumber,
                  static_cast<uint32_t>(number)); // the feeder numbers from 1, as the counter
        ASSERT_GE(frame.frameNumber, counterBefore);
        different += number != numberBefore;
        counterBefore = frame.frameNumber;
        numberBefore = number;
    }
}

TEST_F(FastFeeder, ByteVectorsAreWholeAsWell) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 16, 16);
    const support::Feeder feeder(camera);
    feeder.awaitMore(1);
    std::vector<unsigned char> bytes;
    for (int i = 0; i < READS / 4; ++i) {
        const int delivered = static_cast<int>(feeder.delivered());
        driver->videoFrame(bytes);
        ASSERT_GE(numberIn(bytes), delivered);
    }
}

TEST_F(FastFeeder, FramesThatNobodyTakesAreNeverConverted) {
    const auto camera = attach("camera");
    const auto driver = started("camera", 32, 24);
    const support::Feeder feeder(camera);
    feeder.awaitMore(1000);
    EXPECT_EQ(camera->frames().conversions, 0);
    for (int i = 0; i < 10; ++i)
        poll(*driver);
    EXPECT_LE(camera->frames().conversions, 10);
    EXPECT_GT(camera->frames().conversions, 0);
}

TEST_F(FastFeeder, StoppingAndDroppingWhileFramesComeIsClean) {
    const auto camera = attach("camera");
    const support::Feeder feeder(camera);
    for (int i = 0; i < 100; ++i) {
        auto driver = started("camera", 16, 16);
        feeder.awaitMore(1);
        poll(*driver);
        if (i % 2)
            driver->stopVideoCapture();
        driver.reset();
        ASSERT_FALSE(camera->isRunning());
        ASSERT_FALSE(camera->isOpen());
    }
    EXPECT_LE(camera->frames().alive, 1); // the one that the feeder has in its hand
}
