#include "platform/cameras/wished_candidates.h"

#include "platform/cameras/pixels/pixel_format.h"

#include <algorithm>

namespace ostrel {
namespace cameras {

namespace {

// The sides that are wished for, and those of the other size where none is.
Size wishedOr(const Size& wished, const Size& size) {
    return Size(wished.width != 0 ? wished.width : size.width,
                wished.height != 0 ? wished.height : size.height);
}

int costOf(uint32_t fourcc) {
    pixels::PixelFormat format;
    return pixels::formatOf(fourcc, format) ? pixels::decodeCost(format.layout) : 0;
}

} // namespace

std::vector<uint32_t> formatsFor(const std::vector<uint32_t>& offered,
                                 const std::function<bool(uint32_t)>& isUsable, const ModeWish& wish,
                                 bool nativeOnly) {
    const bool noPicture = std::none_of(offered.begin(), offered.end(), isUsable);
    std::vector<uint32_t> result;
    for (const uint32_t fourcc : offered) {
        const bool named = wish.format == pixels::fourccText(fourcc);
        if (named || (wish.format.empty() && (isUsable(fourcc) || (noPicture && nativeOnly))))
            result.push_back(fourcc);
    }
    return result;
}

void addCandidates(uint32_t fourcc, const std::vector<SizeRange>& ranges,
                   const std::function<std::vector<IntervalRange>(const Size&)>& intervalsAt,
                   const Size& wanted, const ModeWish& wish, std::vector<Candidate>& candidates) {
    Candidate candidate;
    candidate.fourcc = fourcc;
    candidate.cost = costOf(fourcc);
    for (const SizeRange& range : ranges) {
        if (!offers(range, wish.size))
            continue;
        // The wished interval may be there for one end of the range only.
        for (const Size& size : {wanted, range.most, range.least}) {
            candidate.size = fit(range, wishedOr(wish.size, size));
            if (chooseInterval(intervalsAt(candidate.size), wish.interval, candidate.interval)) {
                candidates.push_back(candidate);
                break;
            }
        }
    }
    if (ranges.empty()) {
        candidate.size = wishedOr(wish.size, wanted);
        candidate.interval = wish.interval;
        candidates.push_back(candidate);
    }
}

} // namespace cameras
} // namespace ostrel
