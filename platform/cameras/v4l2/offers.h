// What a node says that it offers: formats, their sizes, their intervals.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_OFFERS_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_OFFERS_H

#include "platform/cameras/backend.h"
#include "platform/cameras/modes.h"
#include "platform/cameras/v4l2/video_node.h"

#include <cstdint>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// All formats on offer, in the driver's order, each once.
std::vector<uint32_t> offeredFormats(const VideoNode& node, bool multiplanar);
// Those that can be converted.
std::vector<uint32_t> convertibleFormats(const VideoNode& node, bool multiplanar);

// Adds every mode, in the driver's order. 0, or the errno with which the driver broke off; what it has told
// until then is added all the same.
int offeredModes(const VideoNode& node, bool multiplanar, NativeModes& modes);

// What fits the request's wish: one candidate for each format and size range, with the size and the interval
// that serve the request best; a driver that lists no sizes is asked for the one that is wanted. Formats
// without a picture are among them when the wish names them, or, with nativeOnly, when there is no other.
std::vector<Candidate> candidates(const VideoNode& node, bool multiplanar, const Request& request,
                                  bool nativeOnly);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
