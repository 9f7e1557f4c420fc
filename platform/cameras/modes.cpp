#include "platform/cameras/modes.h"

#include <algorithm>
#include <cmath>

namespace ostrel {
namespace cameras {

namespace {

// 29.97 and 30 frames a second are the same wish, 24 and 25 are not.
const double RATE_TOLERANCE = 0.01;

// Of the terms of a fraction.
const double LARGEST_TERM = 1000000;

bool axisOffers(int least, int most, int step, int wished) {
    if (wished == 0 || most == 0) // most: the driver does not say
        return true;
    const bool onStep = (wished - least) % std::max(step, 1) == 0 || wished == most; // which may lie beside
    return wished >= least && wished <= most && onStep;
}

double distance(const Interval& interval, const Interval& wished) {
    return std::abs(interval.rate() - wished.rate());
}

bool contains(const IntervalRange& range, const Interval& one) {
    return one.rate() <= range.shortest.rate() && one.rate() >= range.longest.rate();
}

// Of the range, the nearest to the wish.
Interval nearest(const IntervalRange& range, const Interval& wished) {
    if (contains(range, wished))
        return wished;
    return distance(range.shortest, wished) <= distance(range.longest, wished) ? range.shortest
                                                                               : range.longest;
}

Interval best(const std::vector<IntervalRange>& offered) {
    std::vector<Interval> single;
    for (const IntervalRange& range : offered)
        single.push_back(bestInterval(range.shortest, range.longest));
    return bestInterval(single);
}

} // namespace

bool offers(const SizeRange& range, const Size& wished) {
    return axisOffers(range.least.width, range.most.width, range.step.width, wished.width) &&
           axisOffers(range.least.height, range.most.height, range.step.height, wished.height);
}

bool chooseInterval(const std::vector<IntervalRange>& offered, const Interval& wished, Interval& chosen) {
    if (!wished.known()) {
        chosen = best(offered);
        return true;
    }
    Interval found;
    for (const IntervalRange& range : offered) {
        const Interval one = nearest(range, wished);
        if (one.known() && (!found.known() || distance(one, wished) < distance(found, wished)))
            found = one;
    }
    chosen = found.known() ? found : wished;
    return distance(chosen, wished) <= RATE_TOLERANCE * wished.rate();
}

bool offers(const NativeMode& mode, const ModeWish& wish) {
    Interval chosen;
    return (wish.format.empty() || wish.format == mode.format) && offers(mode.sizes, wish.size) &&
           chooseInterval({mode.intervals}, wish.interval, chosen);
}

// By continued fractions: of all fractions with terms as small the nearest, so that 30000/1001 comes out as
// that.
Interval intervalOf(double framesPerSecond) {
    if (!(framesPerSecond > 0) || framesPerSecond > LARGEST_TERM)
        return Interval();
    double over[2] = {1, 0}, under[2] = {0, 1}; // of the last fraction, and of the one before
    double rest = framesPerSecond;
    for (;;) {
        const double whole = std::floor(rest);
        const double nextOver = whole * over[0] + over[1], nextUnder = whole * under[0] + under[1];
        if (nextOver > LARGEST_TERM || nextUnder > LARGEST_TERM)
            break;
        over[1] = over[0];
        under[1] = under[0];
        over[0] = nextOver;
        under[0] = nextUnder;
        if (rest - whole < 1 / LARGEST_TERM)
            break;
        rest = 1 / (rest - whole);
    }
    Interval interval;
    interval.numerator = static_cast<uint32_t>(under[0]);
    interval.denominator = static_cast<uint32_t>(over[0]);
    return interval;
}

} // namespace cameras
} // namespace ostrel
