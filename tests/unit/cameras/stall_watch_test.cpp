#include "platform/cameras/stall_watch.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace tests {

using cameras::StallWatch;

namespace {

const int64_t kSecond = 1000000000;

} // namespace

TEST(StallWatch, TwoSecondsOfSilenceAreTheLeastThatCounts) {
    StallWatch watch;
    watch.begin(100 * kSecond);
    EXPECT_FALSE(watch.isSilent(102 * kSecond - 1));
    EXPECT_TRUE(watch.isSilent(102 * kSecond));
    EXPECT_FALSE(watch.isDue(102 * kSecond - 1, 1));
    EXPECT_TRUE(watch.isDue(102 * kSecond, 1));
}

TEST(StallWatch, ASlowCameraIsGivenItsOwnTime) {
    StallWatch watch;
    watch.begin(0);
    EXPECT_FALSE(watch.isDue(9 * kSecond, 10 * kSecond));
    EXPECT_TRUE(watch.isDue(10 * kSecond, 10 * kSecond));
}

TEST(StallWatch, EachOfThreeRestartsIsGivenTwiceTheTimeAndNoneFollows) {
    StallWatch watch;
    watch.begin(0);
    int64_t now = 0;
    for (const int64_t pause : {2, 4, 8}) {
        EXPECT_FALSE(watch.hasGivenUp());
        EXPECT_FALSE(watch.isDue(now + pause * kSecond - 1, 1)) << pause;
        now += pause * kSecond;
        EXPECT_TRUE(watch.isDue(now, 1)) << pause;
        watch.restarted(now);
    }
    EXPECT_TRUE(watch.hasGivenUp());
    EXPECT_FALSE(watch.isDue(now + 1000 * kSecond, 1));
    EXPECT_FALSE(watch.mayTryAgain());
}

TEST(StallWatch, AFrameEndsTheStallAndTheNextOneStartsAfresh) {
    StallWatch watch;
    watch.begin(0);
    EXPECT_FALSE(watch.frameCame(kSecond));
    EXPECT_TRUE(watch.isDue(3 * kSecond, 1));
    watch.restarted(3 * kSecond);
    EXPECT_TRUE(watch.frameCame(4 * kSecond));
    EXPECT_FALSE(watch.frameCame(5 * kSecond));
    EXPECT_TRUE(watch.isDue(7 * kSecond, 1));
}

TEST(StallWatch, WhoOwesNoFrameNeverStalls) {
    StallWatch watch;
    watch.begin(0);
    EXPECT_FALSE(watch.isDue(100 * kSecond, 0));
    EXPECT_FALSE(watch.isDue(101 * kSecond, 1)) << "counted from when frames were owed again";
    EXPECT_TRUE(watch.isDue(102 * kSecond, 1));
}

TEST(StallWatch, ARefusedStartIsTriedAgainThreeTimesAfterGrowingPauses) {
    StallWatch watch;
    watch.begin(0);
    for (const int64_t pause : {1, 2, 4}) {
        EXPECT_TRUE(watch.mayTryAgain());
        EXPECT_EQ(watch.retryPause(), pause * kSecond);
    }
    EXPECT_FALSE(watch.mayTryAgain());
}

} // namespace tests
} // namespace ostrel
