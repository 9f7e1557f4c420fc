// Which of a camera's formats, sizes and rates to capture with. Knows nothing of the kernel.
#ifndef OSTREL_PLATFORM_CAMERAS_FORMAT_CHOICE_H
#define OSTREL_PLATFORM_CAMERAS_FORMAT_CHOICE_H

#include <cstdint>
#include <vector>

namespace ostrel {
namespace cameras {

struct Size {
    Size() = default;
    Size(int columns, int rows) : width(columns), height(rows) {}

    int width = 0;
    int height = 0;
    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
};

// Sizes from least to most in steps; a single size has least == most.
struct SizeRange {
    Size least, most;
    Size step = {1, 1};
};

// The size of the range that serves the request best: itself, else the next one that is at least as large on
// both axes, else the largest on the axis that is too small.
Size fit(const SizeRange& range, const Size& wanted);

// The time from frame to frame, in seconds as a fraction.
struct Interval {
    uint32_t numerator = 0;
    uint32_t denominator = 0;
    bool known() const { return numerator != 0 && denominator != 0; }
    bool operator==(const Interval& other) const {
        return numerator == other.numerator && denominator == other.denominator;
    }
    double rate() const { return known() ? static_cast<double>(denominator) / numerator : 0; }
};

// The interval to ask for: the slowest that still gives 30 frames a second, else the fastest. Unknown when
// there is none to choose from.
Interval bestInterval(const std::vector<Interval>& offered);
// The same for intervals from shortest to longest, in any step.
Interval bestInterval(const Interval& shortest, const Interval& longest);

struct Candidate {
    uint32_t fourcc = 0;
    Size size;
    Interval interval; // may be unknown
    int cost = 0;      // of decoding one pixel
};

// Best first.
std::vector<Candidate> ranked(std::vector<Candidate> candidates, const Size& wanted);
// The same without those that are known to give fewer frames a second than must not be given up.
std::vector<Candidate> ranked(std::vector<Candidate> candidates, const Size& wanted, double leastRate);
// Whether it gives fewer. What gives nobody knows how many does not.
bool isSlower(const Interval& interval, double leastRate);

} // namespace cameras
} // namespace ostrel

#endif
