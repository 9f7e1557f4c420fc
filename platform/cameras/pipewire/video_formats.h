// Formats, sizes and rates in PipeWire's words.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_VIDEO_FORMATS_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_VIDEO_FORMATS_H

#include "platform/cameras/backend.h"
#include "platform/cameras/modes.h"
#include "platform/cameras/pixels/picture.h"

#include <cstdint>
#include <spa/param/format-utils.h>
#include <spa/param/video/format-utils.h>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

// One format of a node. Sizes and rates are all that the node says with it; empty where it says none.
struct Offer {
    uint32_t fourcc = 0; // as the kernel has them
    std::vector<SizeRange> sizes;
    std::vector<IntervalRange> intervals;
};

// Adds what a format parameter offers; nothing of formats that have no name among the kernel's.
void addOffers(const spa_pod* format, std::vector<Offer>& offers);

// Each once, in the order in which they are offered.
std::vector<uint32_t> formatsOf(const std::vector<Offer>& offers);
void addModes(const std::vector<Offer>& offers, NativeModes& modes);
// What fits the request's wish: one candidate for each format and size range. Formats without a picture are
// among them when the wish names them, or, with nativeOnly, when there is no other.
std::vector<Candidate> candidates(const std::vector<Offer>& offers, const Request& request, bool nativeOnly);

// A picture that a node has granted.
struct Granted {
    uint32_t fourcc = 0;
    pixels::Layout layout = pixels::Layout::Bgrx;
    pixels::YuvMatrix matrix = pixels::YuvMatrix::Bt601;
    Size size;
    Interval interval;
};

// False when it has no name here, or a size that cannot be.
bool readGranted(const spa_pod* format, Granted& granted);

// What to ask a node for, best first. At first exactly the picture that was chosen: ranges express no
// preference, since of a list of sizes or rates that lacks the preferred one PipeWire takes the first, be it
// one frame a second. Then everything else that fits the wish: a camera that runs for another program already
// has its picture, and who insists on another one gets none.
std::vector<const spa_pod*> wordsFor(spa_pod_builder& builder, const Candidate& picture,
                                     const ModeWish& wish);

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
