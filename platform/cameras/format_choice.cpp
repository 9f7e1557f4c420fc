// Raw formats cost the least to decode, but over USB 2 a camera sends large raw pictures five or ten times a
// second where it sends compressed ones thirty times. So the rate comes before the cost, and a compressed
// format wins exactly where the raw ones are slower.
#include "platform/cameras/format_choice.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <tuple>

namespace ostrel {
namespace cameras {

namespace {

// More is not worth a compressed format or a larger picture.
const int ENOUGH_RATE = 30;

// Frames a second, whole ones, so that 29.97 is no worse than 30. A camera that does not tell mostly has the
// usual rate, but one that says so is to be preferred.
int rateRank(const Interval& interval) {
    if (!interval.known())
        return ENOUGH_RATE - 1;
    return std::min(ENOUGH_RATE, static_cast<int>(std::lround(std::min(interval.rate(), 1000.0))));
}

bool isEnough(const Interval& interval) {
    return rateRank(interval) >= ENOUGH_RATE;
}

int fitAxis(int least, int most, int step, int wanted) {
    if (wanted <= least)
        return least;
    if (wanted >= most)
        return most;
    step = std::max(step, 1);
    const int above = least + (wanted - least + step - 1) / step * step;
    return std::min(above, most);
}

int64_t areaOf(const Size& size) {
    return static_cast<int64_t>(size.width) * size.height;
}

bool covers(const Size& size, const Size& wanted) {
    return size.width >= wanted.width && size.height >= wanted.height;
}

// Cameras round the sides of their sizes: 848x480 and 1360x768 are meant as 16:9.
bool sameAspect(const Size& a, const Size& b) {
    const int64_t one = static_cast<int64_t>(a.width) * b.height;
    const int64_t other = static_cast<int64_t>(a.height) * b.width;
    return std::abs(one - other) * 100 <= std::max(one, other);
}

// What a candidate lacks, the gravest first.
struct Rank {
    bool small;       // pixels that the camera does not have cannot be made up
    int64_t missing;  // where none covers the request the largest is taken: minus its area, else 0
    int slowness;     // minus the frames a second that count
    bool otherSize;   // it will be scaled
    bool otherAspect; // it will be distorted as well
    int64_t area;     // more pixels than needed
    int cost;         // of decoding

    Rank(const Candidate& c, const Size& wanted)
        : small(!covers(c.size, wanted)), missing(small ? -areaOf(c.size) : 0),
          slowness(-rateRank(c.interval)), otherSize(!(c.size == wanted)),
          otherAspect(!sameAspect(c.size, wanted)), area(areaOf(c.size)), cost(c.cost) {}
    bool operator<(const Rank& other) const { return fields() < other.fields(); }

private:
    std::tuple<bool, int64_t, int, bool, bool, int64_t, int> fields() const {
        return {small, missing, slowness, otherSize, otherAspect, area, cost};
    }
};

} // namespace

Size fit(const SizeRange& range, const Size& wanted) {
    Size size;
    size.width = fitAxis(range.least.width, range.most.width, range.step.width, wanted.width);
    size.height = fitAxis(range.least.height, range.most.height, range.step.height, wanted.height);
    return size;
}

Interval bestInterval(const std::vector<Interval>& offered) {
    Interval best;
    for (const Interval& one : offered) {
        if (!one.known())
            continue;
        const bool better = !best.known() || (isEnough(one) ? !isEnough(best) || one.rate() < best.rate()
                                                            : !isEnough(best) && one.rate() > best.rate());
        if (better)
            best = one;
    }
    return best;
}

Interval bestInterval(const Interval& shortest, const Interval& longest) {
    Interval enough;
    enough.numerator = 1;
    enough.denominator = ENOUGH_RATE;
    if (!shortest.known() || shortest.rate() <= enough.rate())
        return shortest;
    return longest.known() && longest.rate() > enough.rate() ? longest : enough;
}

std::vector<Candidate> ranked(std::vector<Candidate> candidates, const Size& wanted) {
    std::stable_sort(candidates.begin(), candidates.end(), [&](const Candidate& a, const Candidate& b) {
        return Rank(a, wanted) < Rank(b, wanted);
    });
    return candidates;
}

std::vector<Candidate> ranked(std::vector<Candidate> candidates, const Size& wanted, double leastRate) {
    candidates.erase(std::remove_if(candidates.begin(), candidates.end(),
                                    [&](const Candidate& one) { return isSlower(one.interval, leastRate); }),
                     candidates.end());
    return ranked(std::move(candidates), wanted);
}

bool isSlower(const Interval& interval, double leastRate) {
    return interval.known() && interval.rate() < leastRate - 0.5;
}

} // namespace cameras
} // namespace ostrel
