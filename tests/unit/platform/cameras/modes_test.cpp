// Which modes fit which wishes.
#include "platform/cameras/modes.h"
#include "platform/cameras/wishes.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <thread>

namespace ostrel::tests {

using cameras::Interval;
using cameras::IntervalRange;
using cameras::ModeWish;
using cameras::NativeMode;
using cameras::Size;
using cameras::SizeRange;

namespace {

Interval fraction(uint32_t numerator, uint32_t denominator) {
    Interval interval;
    interval.numerator = numerator;
    interval.denominator = denominator;
    return interval;
}

IntervalRange single(uint32_t numerator, uint32_t denominator) {
    return {fraction(numerator, denominator), fraction(numerator, denominator)};
}

NativeMode mode(const std::string& format, const Size& size, const IntervalRange& intervals) {
    NativeMode result;
    result.format = format;
    result.sizes.least = result.sizes.most = size;
    result.intervals = intervals;
    return result;
}

// What is asked for; "none" where nothing fits.
std::string chosen(const std::vector<IntervalRange>& offered, const Interval& wished) {
    Interval interval;
    if (!cameras::chooseInterval(offered, wished, interval))
        return "none";
    return std::to_string(interval.numerator) + '/' + std::to_string(interval.denominator);
}

std::string asFraction(double rate) {
    const Interval interval = cameras::intervalOf(rate);
    return std::to_string(interval.numerator) + '/' + std::to_string(interval.denominator);
}

} // namespace

TEST(ModesTest, EverySideOfAWishCountsByItself) {
    const NativeMode hd = mode("MJPG", Size(1280, 720), single(1, 60));
    const auto fits = [&hd](const char* format, const Size& size, const Interval& interval) {
        ModeWish wish;
        wish.format = format;
        wish.size = size;
        wish.interval = interval;
        return offers(hd, wish);
    };
    EXPECT_TRUE(fits("", Size(), Interval()));
    EXPECT_TRUE(fits("MJPG", Size(1280, 720), fraction(1, 60)));
    EXPECT_TRUE(fits("MJPG", Size(), Interval()));
    EXPECT_FALSE(fits("YUYV", Size(), Interval()));
    EXPECT_FALSE(fits("MJP", Size(), Interval()));
    EXPECT_TRUE(fits("", Size(1280, 0), Interval()));
    EXPECT_TRUE(fits("", Size(0, 720), Interval()));
    EXPECT_FALSE(fits("", Size(1280, 480), Interval()));
    EXPECT_FALSE(fits("", Size(640, 720), Interval()));
    EXPECT_TRUE(fits("", Size(), fraction(1, 60)));
    EXPECT_FALSE(fits("", Size(), fraction(1, 30)));
}

TEST(ModesTest, ARangeHasTheSizesOnItsSteps) {
    SizeRange range;
    range.least = Size(32, 16);
    range.most = Size(640, 400);
    range.step = Size(8, 4);
    EXPECT_TRUE(offers(range, Size(32, 16)));
    EXPECT_TRUE(offers(range, Size(640, 400)));
    EXPECT_TRUE(offers(range, Size(40, 20)));
    EXPECT_FALSE(offers(range, Size(41, 20)));
    EXPECT_FALSE(offers(range, Size(40, 22)));
    EXPECT_FALSE(offers(range, Size(24, 16)));
    EXPECT_FALSE(offers(range, Size(648, 400)));
    EXPECT_FALSE(offers(range, Size(640, 404)));
    range.most = Size(642, 400);
    EXPECT_TRUE(offers(range, Size(642, 400))) << "what is listed can be had";
    EXPECT_FALSE(offers(range, Size(641, 400)));
    range.step = Size(0, 0); // a driver's mistake
    EXPECT_TRUE(offers(range, Size(33, 17)));
}

TEST(ModesTest, WhereTheDriverListsNoSizesEverySizeMayBeThere) {
    EXPECT_TRUE(offers(SizeRange(), Size(640, 480)));
}

TEST(ModesTest, TheNearestRateWithinAPercentIsTaken) {
    const std::vector<IntervalRange> offered = {single(1, 30), single(1001, 30000), single(1, 25),
                                                single(1, 60)};
    EXPECT_EQ(chosen(offered, fraction(1, 30)), "1/30");
    EXPECT_EQ(chosen(offered, fraction(1001, 30000)), "1001/30000");
    EXPECT_EQ(chosen(offered, fraction(100, 5994)), "1/60");
    EXPECT_EQ(chosen(offered, fraction(1, 24)), "none");
    EXPECT_EQ(chosen({single(1, 100)}, fraction(1, 101)), "1/100");
    EXPECT_EQ(chosen({single(1, 100)}, fraction(1, 102)), "none");
}

TEST(ModesTest, ARangeOfIntervalsHasAllThatAreBetween) {
    const std::vector<IntervalRange> offered = {{fraction(1, 120), fraction(1, 5)}};
    EXPECT_EQ(chosen(offered, fraction(100, 2997)), "100/2997");
    EXPECT_EQ(chosen(offered, fraction(1, 120)), "1/120");
    EXPECT_EQ(chosen(offered, fraction(1, 5)), "1/5");
    EXPECT_EQ(chosen(offered, fraction(1, 4)), "none");
    EXPECT_EQ(chosen(offered, fraction(1, 240)), "none");
    EXPECT_EQ(chosen(offered, fraction(1000, 120500)), "1/120") << "the end of the range is near enough";
}

TEST(ModesTest, WithoutAWishTheBestIntervalIsTakenAndWithoutAnOfferTheWish) {
    EXPECT_EQ(chosen({single(1, 15), single(1, 30), single(1, 60)}, Interval()), "1/30");
    EXPECT_EQ(chosen({{fraction(1, 120), fraction(1, 5)}}, Interval()), "1/30");
    EXPECT_EQ(chosen({}, Interval()), "0/0");
    EXPECT_EQ(chosen({}, fraction(1, 60)), "1/60");
}

TEST(ModesTest, ARateIsTheFractionThatItCameFrom) {
    EXPECT_EQ(asFraction(30), "1/30");
    EXPECT_EQ(asFraction(29.97), "100/2997");
    EXPECT_EQ(asFraction(30000.0 / 1001), "1001/30000");
    EXPECT_EQ(asFraction(24000.0 / 1001), "1001/24000");
    EXPECT_EQ(asFraction(1.0 / 3), "3/1");
    EXPECT_EQ(asFraction(0.001), "1000/1");
    EXPECT_EQ(asFraction(7.5), "2/15");
    EXPECT_EQ(asFraction(1000), "1/1000");
    for (const double rate : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity(), 1e9})
        EXPECT_FALSE(cameras::intervalOf(rate).known()) << rate;
    for (double rate = 0.01; rate < 300; rate *= 1.37) // of no fraction in particular
        EXPECT_NEAR(cameras::intervalOf(rate).rate(), rate, rate * 1e-6);
}

TEST(ModesTest, AWishHoldsForItsCameraUntilItIsTakenBack) {
    ModeWish wish;
    wish.format = "MJPG";
    cameras::setModeWish("one", wish);
    EXPECT_EQ(cameras::modeWish("one").format, "MJPG");
    EXPECT_TRUE(cameras::modeWish("another").any());
    cameras::setModeWish("one", ModeWish());
    EXPECT_TRUE(cameras::modeWish("one").any());
}

} // namespace ostrel::tests
