#include "platform/cameras/format_choice.h"

#include <gtest/gtest.h>

namespace ostrel {
namespace tests {

using namespace cameras;

namespace {

const int kRawCost = 22, kJpegCost = 300;

Size size(int width, int height) {
    Size s;
    s.width = width;
    s.height = height;
    return s;
}

Interval rate(uint32_t numerator, uint32_t denominator) { // frames a second, as a fraction
    Interval i;
    i.numerator = denominator;
    i.denominator = numerator;
    return i;
}

Candidate candidate(char name, int width, int height, Interval interval, int cost) {
    Candidate c;
    c.fourcc = static_cast<uint32_t>(name);
    c.size = size(width, height);
    c.interval = interval;
    c.cost = cost;
    return c;
}

char best(const std::vector<Candidate>& candidates, int width, int height) {
    return static_cast<char>(ranked(candidates, size(width, height)).front().fourcc);
}

SizeRange range(Size least, Size most, Size step) {
    SizeRange r;
    r.least = least;
    r.most = most;
    r.step = step;
    return r;
}

} // namespace

TEST(FormatChoice, RawWinsWhereItIsAsFastAsCompressed) {
    EXPECT_EQ(best({candidate('m', 640, 480, rate(30, 1), kJpegCost),
                    candidate('y', 640, 480, rate(30, 1), kRawCost)},
                   640, 480),
              'y');
}

TEST(FormatChoice, CompressedWinsOnlyWhereRawIsSlower) {
    EXPECT_EQ(best({candidate('y', 1280, 720, rate(10, 1), kRawCost),
                    candidate('m', 1280, 720, rate(30, 1), kJpegCost)},
                   1280, 720),
              'm');
}

TEST(FormatChoice, MoreThanThirtyFramesASecondCountAsThirty) {
    EXPECT_EQ(best({candidate('m', 640, 480, rate(60, 1), kJpegCost),
                    candidate('y', 640, 480, rate(30, 1), kRawCost)},
                   640, 480),
              'y');
}

TEST(FormatChoice, TheRateOfNtscCountsAsThirty) {
    EXPECT_EQ(best({candidate('m', 640, 480, rate(30, 1), kJpegCost),
                    candidate('y', 640, 480, rate(30000, 1001), kRawCost)},
                   640, 480),
              'y');
}

TEST(FormatChoice, TheNativeSizeGoesBeforeTheCostOfDecoding) {
    EXPECT_EQ(best({candidate('y', 800, 600, rate(30, 1), kRawCost),
                    candidate('m', 640, 480, rate(30, 1), kJpegCost)},
                   640, 480),
              'm');
}

TEST(FormatChoice, TheRateGoesBeforeTheNativeSize) {
    EXPECT_EQ(best({candidate('y', 1280, 720, rate(10, 1), kRawCost),
                    candidate('m', 1920, 1080, rate(30, 1), kJpegCost)},
                   1280, 720),
              'm');
}

TEST(FormatChoice, TheNextLargerSizeIsTakenWhereTheNativeOneIsMissing) {
    EXPECT_EQ(best({candidate('a', 320, 240, rate(30, 1), kRawCost),
                    candidate('b', 1920, 1080, rate(30, 1), kRawCost),
                    candidate('c', 800, 600, rate(30, 1), kRawCost),
                    candidate('d', 640, 360, rate(30, 1), kRawCost)},
                   640, 480),
              'c');
}

TEST(FormatChoice, TheLargestSizeIsTakenWhereNoneIsLargeEnough) {
    EXPECT_EQ(best({candidate('a', 320, 240, rate(30, 1), kRawCost),
                    candidate('b', 640, 480, rate(15, 1), kRawCost),
                    candidate('c', 352, 288, rate(30, 1), kRawCost)},
                   1280, 720),
              'b');
}

TEST(FormatChoice, AnUnknownRateIsNoneTheWorseButAKnownOneIsPreferred) {
    EXPECT_EQ(best({candidate('y', 640, 480, rate(15, 1), kRawCost),
                    candidate('u', 640, 480, Interval(), kRawCost)},
                   640, 480),
              'u');
    EXPECT_EQ(best({candidate('u', 640, 480, Interval(), kRawCost),
                    candidate('m', 640, 480, rate(30, 1), kJpegCost)},
                   640, 480),
              'm');
}

TEST(FormatChoice, TheDriversOrderDecidesBetweenEquals) {
    EXPECT_EQ(best({candidate('a', 640, 480, rate(30, 1), kRawCost),
                    candidate('b', 640, 480, rate(30, 1), kRawCost)},
                   640, 480),
              'a');
}

TEST(FrameInterval, IsTheSlowestThatGivesThirtyElseTheFastest) {
    EXPECT_DOUBLE_EQ(bestInterval({rate(60, 1), rate(30, 1), rate(15, 1)}).rate(), 30);
    EXPECT_DOUBLE_EQ(bestInterval({rate(5, 1), rate(15, 1), rate(10, 1)}).rate(), 15);
    EXPECT_DOUBLE_EQ(bestInterval({rate(25, 1), rate(50, 1)}).rate(), 50);
    EXPECT_DOUBLE_EQ(bestInterval({rate(120, 1), rate(60, 1)}).rate(), 60);
}

TEST(FrameInterval, MissingOrSenselessOnesAreUnknown) {
    EXPECT_FALSE(bestInterval(std::vector<Interval>()).known());
    EXPECT_FALSE(bestInterval({rate(0, 1), rate(1, 0)}).known());
    EXPECT_DOUBLE_EQ(bestInterval({rate(0, 1), rate(7, 1)}).rate(), 7);
}

TEST(FrameInterval, OfARangeIsThirtyWhereTheRangeHasIt) {
    EXPECT_DOUBLE_EQ(bestInterval(rate(60, 1), rate(1, 1)).rate(), 30);
    EXPECT_DOUBLE_EQ(bestInterval(rate(15, 1), rate(1, 1)).rate(), 15);
    EXPECT_DOUBLE_EQ(bestInterval(rate(120, 1), rate(60, 1)).rate(), 60);
    EXPECT_FALSE(bestInterval(Interval(), Interval()).known());
}

TEST(SizeRange, ContainsTheRequestOrIsBroughtNearIt) {
    const SizeRange steps = range(size(160, 120), size(1920, 1080), size(16, 8));
    EXPECT_EQ(fit(steps, size(640, 480)), size(640, 480));
    EXPECT_EQ(fit(steps, size(641, 481)), size(656, 488));
    EXPECT_EQ(fit(steps, size(100, 100)), size(160, 120));
    EXPECT_EQ(fit(steps, size(4000, 3000)), size(1920, 1080));
    EXPECT_EQ(fit(steps, size(4000, 480)), size(1920, 480));
}

TEST(SizeRange, NeverStepsBeyondItsEnd) {
    EXPECT_EQ(fit(range(size(16, 16), size(100, 100), size(32, 32)), size(90, 99)), size(100, 100));
}

TEST(SizeRange, AStepOfZeroIsTakenForOne) {
    EXPECT_EQ(fit(range(size(2, 2), size(4096, 4096), size(0, 0)), size(640, 480)), size(640, 480));
}

TEST(SizeRange, OfOneSizeIsThatSize) {
    EXPECT_EQ(fit(range(size(640, 480), size(640, 480), size(1, 1)), size(320, 240)), size(640, 480));
}

} // namespace tests
} // namespace ostrel
