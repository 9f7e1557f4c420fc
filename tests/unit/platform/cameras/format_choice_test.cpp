#include "platform/cameras/format_choice.h"

#include <gtest/gtest.h>

namespace ostrel::tests {

using namespace cameras;

namespace {

Interval rate(uint32_t numerator, uint32_t denominator) { // frames a second, as a fraction
    Interval i;
    i.numerator = denominator;
    i.denominator = numerator;
    return i;
}

const Interval k10 = rate(10, 1), k15 = rate(15, 1), k30 = rate(30, 1), k60 = rate(60, 1);
const Interval NTSC = rate(30000, 1001), UNTOLD;

const int RAW = 22, JPEG = 300; // of decoding

Candidate mode(int width, int height, Interval interval, int cost = RAW) {
    Candidate c;
    c.size = Size(width, height);
    c.interval = interval;
    c.cost = cost;
    return c;
}

struct Choice {
    const char* why;
    Size asked;
    std::vector<Candidate> offered;
    size_t best; // of them, counted from 0
};

const Choice CHOICES[] = {
    {"raw where it is as fast as compressed",
     Size(640, 480),
     {mode(640, 480, k30, JPEG), mode(640, 480, k30)},
     1},
    {"compressed where raw is slower",
     Size(1280, 720),
     {mode(1280, 720, k10), mode(1280, 720, k30, JPEG)},
     1},
    {"more than thirty a second count as thirty",
     Size(640, 480),
     {mode(640, 480, k60, JPEG), mode(640, 480, k30)},
     1},
    {"the rate of NTSC counts as thirty",
     Size(640, 480),
     {mode(640, 480, k30, JPEG), mode(640, 480, NTSC)},
     1},
    {"the native size before the cost of decoding",
     Size(640, 480),
     {mode(800, 600, k30), mode(640, 480, k30, JPEG)},
     1},
    {"the rate before the native size",
     Size(1280, 720),
     {mode(1280, 720, k10), mode(1920, 1080, k30, JPEG)},
     1},
    {"the rate before the aspect", Size(640, 480), {mode(800, 600, k10), mode(848, 480, k30)}, 1},
    {"the next larger size where the native one is missing",
     Size(640, 480),
     {mode(320, 240, k30), mode(1600, 1200, k30), mode(800, 600, k30), mode(640, 360, k30)},
     2},
    {"the same aspect before fewer pixels", Size(640, 480), {mode(848, 480, k30), mode(800, 600, k30)}, 1},
    {"the same aspect of a larger request", Size(960, 720), {mode(1280, 720, k30), mode(1280, 960, k30)}, 1},
    {"the same aspect of a small request",
     Size(320, 240),
     {mode(424, 240, k30), mode(352, 288, k30), mode(640, 480, k30)},
     2},
    {"the native size where it is on offer",
     Size(320, 240),
     {mode(424, 240, k30), mode(352, 288, k30), mode(640, 480, k30), mode(320, 240, k30)},
     3},
    {"the same aspect before the cost of decoding",
     Size(640, 480),
     {mode(848, 480, k30), mode(800, 600, k30, JPEG)},
     1},
    {"sides that cameras round have the aspect that is meant",
     Size(640, 360),
     {mode(848, 480, k30), mode(1280, 720, k30), mode(640, 480, k30)},
     0},
    {"fewer pixels where no aspect is the same",
     Size(640, 480),
     {mode(1280, 720, k30), mode(848, 480, k30)},
     1},
    {"the largest size where none is large enough",
     Size(1280, 720),
     {mode(320, 240, k30), mode(640, 480, k15), mode(352, 288, k30)},
     1},
    {"an untold rate is better than a low one",
     Size(640, 480),
     {mode(640, 480, k15), mode(640, 480, UNTOLD)},
     1},
    {"a rate that is told and enough is better than an untold one",
     Size(640, 480),
     {mode(640, 480, UNTOLD), mode(640, 480, k30, JPEG)},
     1},
    {"the driver's order between equals", Size(640, 480), {mode(640, 480, k30), mode(640, 480, k30)}, 0},
};

SizeRange range(Size least, Size most, Size step) {
    SizeRange r;
    r.least = least;
    r.most = most;
    r.step = step;
    return r;
}

} // namespace

TEST(FormatChoice, IsTheBestOfWhatIsOffered) {
    for (const Choice& choice : CHOICES) {
        std::vector<Candidate> offered = choice.offered;
        for (size_t i = 0; i < offered.size(); ++i)
            offered[i].fourcc = static_cast<uint32_t>(i);
        EXPECT_EQ(ranked(offered, choice.asked).front().fourcc, choice.best) << choice.why;
    }
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
    const SizeRange steps = range(Size(160, 120), Size(1920, 1080), Size(16, 8));
    EXPECT_EQ(fit(steps, Size(640, 480)), Size(640, 480));
    EXPECT_EQ(fit(steps, Size(641, 481)), Size(656, 488));
    EXPECT_EQ(fit(steps, Size(100, 100)), Size(160, 120));
    EXPECT_EQ(fit(steps, Size(4000, 3000)), Size(1920, 1080));
    EXPECT_EQ(fit(steps, Size(4000, 480)), Size(1920, 480));
}

TEST(SizeRange, NeverStepsBeyondItsEnd) {
    EXPECT_EQ(fit(range(Size(16, 16), Size(100, 100), Size(32, 32)), Size(90, 99)), Size(100, 100));
}

TEST(SizeRange, AStepOfZeroIsTakenForOne) {
    EXPECT_EQ(fit(range(Size(2, 2), Size(4096, 4096), Size(0, 0)), Size(640, 480)), Size(640, 480));
}

TEST(SizeRange, OfOneSizeIsThatSize) {
    EXPECT_EQ(fit(range(Size(640, 480), Size(640, 480), Size(1, 1)), Size(320, 240)), Size(640, 480));
}

} // namespace ostrel::tests
