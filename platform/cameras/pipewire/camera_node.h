// What PipeWire says of a camera.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CAMERA_NODE_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CAMERA_NODE_H

#include "platform/cameras/format_choice.h"
#include "platform/cameras/pixels/picture.h"

#include <cstdint>
#include <spa/param/format-utils.h>
#include <spa/param/video/format-utils.h>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Texts are bytes as PipeWire gives them; what nobody said is empty.
struct CameraNode {
    uint32_t id = 0;    // of this moment only
    std::string serial; // never used again while the daemon runs: what to connect to
    std::string name;   // "v4l2_input.pci-...": made from the place where the camera is plugged in, it stays
    std::string description;   // for people
    std::string v4l2Path;      // "/dev/video0": the very node that the kernel has
    std::string deviceNumbers; // of all its V4L2 nodes (st_rdev), from 0.3.80 on
    bool inUse = false;        // PipeWire has it open at present
};

// One format of a node. Sizes and rates are all that the node says with it.
struct Offer {
    uint32_t fourcc = 0; // as the kernel has them
    std::vector<SizeRange> sizes;
    std::vector<Interval> intervals; // empty: not said
    bool anyInterval = false;        // intervals are the shortest and the longest, and all between them
};

// Adds what a format parameter offers that can be converted; `all` gets the names of what cannot, too.
void addOffers(const spa_pod* format, std::vector<Offer>& offers, std::vector<uint32_t>& all);

// One candidate for each format and size range.
std::vector<Candidate> candidates(const std::vector<Offer>& offers, const Size& wanted);

// A picture that a node has granted.
struct Granted {
    uint32_t fourcc = 0;
    pixels::Layout layout = pixels::Layout::Bgrx;
    pixels::YuvMatrix matrix = pixels::YuvMatrix::Bt601;
    Size size;
    Interval interval;
};

// False when it cannot be converted.
bool readGranted(const spa_pod* format, Granted& granted);

// The one picture that would be the best. Ranges express no wish: of a list of sizes or rates that lacks the
// preferred one PipeWire takes the first, be it one frame a second.
const spa_pod* exactly(spa_pod_builder& builder, const Candidate& picture);
// Everything that can be converted, raw or as JPEG: a camera that runs for another program already has its
// picture, and who insists on another one gets none.
const spa_pod* anyRaw(spa_pod_builder& builder, const Size& wanted);
const spa_pod* anyJpeg(spa_pod_builder& builder, const Size& wanted);

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
