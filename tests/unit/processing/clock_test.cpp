#include <ostrel/processing.h>

#include "processing/clock.h"

#include <gtest/gtest.h>

using ostrel::millisecondsOf;
using ostrel::OVideoCommon;

namespace {

timeval time(int64_t seconds, int microseconds) {
    timeval value = timeval();
    value.tv_sec = static_cast<time_t>(seconds);
    value.tv_usec = microseconds;
    return value;
}

uint32_t now() {
    timeval value;
    gettimeofday(&value, nullptr);
    return millisecondsOf(value);
}

} // namespace

TEST(Clock, CutsMicrosecondsOffInsteadOfRounding) {
    EXPECT_EQ(millisecondsOf(time(0, 0)), 0u);
    EXPECT_EQ(millisecondsOf(time(0, 999)), 0u);
    EXPECT_EQ(millisecondsOf(time(0, 1000)), 1u);
    EXPECT_EQ(millisecondsOf(time(0, 500999)), 500u);
}

TEST(Clock, CountsTheLastMicrosecondOfASecondAs999Milliseconds) {
    EXPECT_EQ(millisecondsOf(time(0, 999999)), 999u);
    EXPECT_EQ(millisecondsOf(time(12, 999999)), 12999u);
    EXPECT_EQ(millisecondsOf(time(13, 0)), 13000u);
}

TEST(Clock, AgreesWithPlainDivisionForEveryMillisecondBoundary) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
        const uint32_t expected = static_cast<uint32_t>(millisecond);
        ASSERT_EQ(millisecondsOf(time(0, millisecond * 1000)), expected);
        ASSERT_EQ(millisecondsOf(time(0, millisecond * 1000 + 999)), expected);
    }
}

TEST(Clock, KeepsTheLow32BitsOfALargeTime) {
    // 2^32 ms are 4294967.296 s.
    EXPECT_EQ(millisecondsOf(time(4294967, 295000)), 0xFFFFFFFFu);
    EXPECT_EQ(millisecondsOf(time(4294967, 296000)), 0u);
    EXPECT_EQ(millisecondsOf(time(1700000000, 123456)), 3487918203u); // 1700000000123 mod 2^32
}

TEST(Clock, DifferencesTakenIn32BitsHoldAcrossTheWrap) {
    const uint32_t before = millisecondsOf(time(4294966, 500000));
    const uint32_t after = millisecondsOf(time(4294968, 0));
    EXPECT_GT(before, after);
    EXPECT_EQ(after - before, 1500u);
}

TEST(Clock, DifferencesAwayFromTheWrapArePlain) {
    EXPECT_EQ(millisecondsOf(time(1700000001, 750000)) - millisecondsOf(time(1700000000, 250000)), 1500u);
}

TEST(Clock, TimesBefore1970CountBackwards) {
    EXPECT_EQ(millisecondsOf(time(-1, 0)), 0u - 1000u);
}

TEST(Clock, GetTimeReadsTheWallClock) {
    const uint32_t before = now();
    const uint32_t stamp = OVideoCommon::get_time();
    const uint32_t after = now();
    EXPECT_LE(stamp - before, after - before);
}
