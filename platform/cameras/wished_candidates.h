// Which modes to try for a request, of those that a camera tells by the kernel's names.
#ifndef OSTREL_PLATFORM_CAMERAS_WISHED_CANDIDATES_H
#define OSTREL_PLATFORM_CAMERAS_WISHED_CANDIDATES_H

#include "platform/cameras/modes.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace ostrel {
namespace cameras {

// Those that a request may get, in the order in which they are offered: the format that is wished for, else
// all that are usable; with nativeOnly all others where none is.
std::vector<uint32_t> formatsFor(const std::vector<uint32_t>& offered,
                                 const std::function<bool(uint32_t)>& isUsable, const ModeWish& wish,
                                 bool nativeOnly);

// Adds a candidate for each range of sizes that fits the wish, with the size and the interval that serve it
// best; where no sizes are listed, one of what is wanted. `intervalsAt`: what is offered at a size.
void addCandidates(uint32_t fourcc, const std::vector<SizeRange>& ranges,
                   const std::function<std::vector<IntervalRange>(const Size&)>& intervalsAt,
                   const Size& wanted, const ModeWish& wish, std::vector<Candidate>& candidates);

} // namespace cameras
} // namespace ostrel

#endif
