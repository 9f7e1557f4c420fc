#include "platform/cameras/stall_watch.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using cameras::StallWatch;

namespace {

const int64_t SECOND = 1000000000;

} // namespace

TEST(StallWatch, TwoSecondsOfSilenceAreTheLeastThatCounts) {
    StallWatch watch;
    watch.begin(100 * SECOND);
    EXPECT_FALSE(watch.isSilent(102 * SECOND - 1));
    EXPECT_TRUE(watch.isSilent(102 * SECOND));
    EXPECT_FALSE(watch.isDue(102 * SECOND - 1, 1));
    EXPECT_TRUE(watch.isDue(102 * SECOND, 1));
}

TEST(StallWatch, ASlowCameraIsGivenItsOwnTime) {
    StallWatch watch;
    watch.begin(0);
    EXPECT_FALSE(watch.isDue(9 * SECOND, 10 * SECOND));
    EXPECT_TRUE(watch.isDue(10 * SECOND, 10 * SECOND));
}

TEST(StallWatch, EachOfThreeRestartsIsGivenTwiceTheTimeAndNoneFollows) {
    StallWatch watch;
    watch.begin(0);
    int64_t now = 0;
    for (const int64_t pause : {2, 4, 8}) {
        EXPECT_FALSE(watch.hasGivenUp());
        EXPECT_FALSE(watch.isDue(now + pause * SECOND - 1, 1)) << pause;
        now += pause * SECOND;
        EXPECT_TRUE(watch.isDue(now, 1)) << pause;
        watch.restarted(now);
    }
    EXPECT_TRUE(watch.hasGivenUp());
    EXPECT_FALSE(watch.isDue(now + 1000 * SECOND, 1));
    EXPECT_FALSE(watch.mayTryAgain());
}

TEST(StallWatch, AFrameEndsTheStallAndTheNextOneStartsAfresh) {
    StallWatch watch;
    watch.begin(0);
    EXPECT_FALSE(watch.frameCame(SECOND));
    EXPECT_TRUE(watch.isDue(3 * SECOND, 1));
    watch.restarted(3 * SECOND);
    EXPECT_TRUE(watch.frameCame(4 * SECOND));
    EXPECT_FALSE(watch.frameCame(5 * SECOND));
    EXPECT_TRUE(watch.isDue(7 * SECOND, 1));
}

TEST(StallWatch, WhoOwesNoFrameNeverStalls) {
    StallWatch watch;
    watch.begin(0);
    EXPECT_FALSE(watch.isDue(100 * SECOND, 0));
    EXPECT_FALSE(watch.isDue(101 * SECOND, 1)) << "counted from when frames were owed again";
    EXPECT_TRUE(watch.isDue(102 * SECOND, 1));
}

TEST(StallWatch, ARefusedStartIsTriedAgainThreeTimesAfterGrowingPauses) {
    StallWatch watch;
    watch.begin(0);
    for (const int64_t pause : {1, 2, 4}) {
        EXPECT_TRUE(watch.mayTryAgain());
        EXPECT_EQ(watch.retryPause(), pause * SECOND);
    }
    EXPECT_FALSE(watch.mayTryAgain());
}

} // namespace ostrel::tests
