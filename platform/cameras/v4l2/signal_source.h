// What comes in at a receiver or grabber, such as the picture of an HDMI cable. A camera that makes its own
// pictures has nothing of the kind: all of this is then refused by its driver and without effect.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_SIGNAL_SOURCE_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_SIGNAL_SOURCE_H

#include "platform/cameras/v4l2/video_node.h"

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Before a format is chosen: prepares the driver for what comes in now, without which it keeps to the mode of
// somebody who was there before. From then on it tells of changes.
void followSource(const VideoNode& node);

// For when poll() reports POLLPRI: takes what the driver has told, and answers whether what comes in is of
// another size or rate now, so that the stream has to be set up anew.
bool sourceHasChanged(const VideoNode& node);

// Nothing comes in, so nothing can come out.
bool hasNoSignal(const VideoNode& node);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
