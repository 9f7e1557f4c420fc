#include "apps/viewer/frame_meter.h"

#include <gtest/gtest.h>

namespace ostrel::apps::viewer {

using std::chrono::milliseconds;

class FrameMeterTest : public testing::Test {
protected:
    Clock::time_point at(int ms) const { return start + milliseconds(ms); }

    const Clock::time_point start = Clock::now();
    FrameMeter meter;
};

TEST_F(FrameMeterTest, NothingBeforeTheFirstFrame) {
    EXPECT_EQ(meter.rate(at(5000)), 0);
    EXPECT_EQ(meter.age(at(5000)), milliseconds(0));
}

TEST_F(FrameMeterTest, RateIsThatOfTheFramesNotOfThePolls) {
    for (int i = 0; i <= 30; ++i)
        meter.frameArrived(uint32_t(7 + i), at(i * 40));
    EXPECT_DOUBLE_EQ(meter.rate(at(1210)), 25.0);
}

TEST_F(FrameMeterTest, FramesThatWereNotTakenCount) {
    meter.frameArrived(1, at(0));
    meter.frameArrived(121, at(2000));
    EXPECT_DOUBLE_EQ(meter.rate(at(2000)), 60.0);
}

TEST_F(FrameMeterTest, CounterMayWrap) {
    meter.frameArrived(0xfffffff0U, at(0));
    meter.frameArrived(14, at(1000));
    EXPECT_DOUBLE_EQ(meter.rate(at(1000)), 30.0);
}

TEST_F(FrameMeterTest, CameraSlowerThanTheWindowKeepsItsRate) {
    meter.frameArrived(1, at(0));
    meter.frameArrived(2, at(2000));
    EXPECT_DOUBLE_EQ(meter.rate(at(2000)), 0.5);
    EXPECT_DOUBLE_EQ(meter.rate(at(3900)), 0.5);
    EXPECT_EQ(meter.age(at(3900)), milliseconds(1900));
}

TEST_F(FrameMeterTest, StoppedCameraHasNoRateButItsFrameAges) {
    meter.frameArrived(1, at(0));
    meter.frameArrived(31, at(1000));
    EXPECT_DOUBLE_EQ(meter.rate(at(1000)), 30.0);
    EXPECT_DOUBLE_EQ(meter.rate(at(4000)), 0.0);
    EXPECT_EQ(meter.age(at(9000)), milliseconds(8000));
}

} // namespace ostrel::apps::viewer
