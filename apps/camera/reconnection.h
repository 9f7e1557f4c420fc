// Going on with a camera that was pulled out, for the commands that take --reconnect.
#ifndef OSTREL_APPS_CAMERA_RECONNECTION_H
#define OSTREL_APPS_CAMERA_RECONNECTION_H

#include "apps/camera/commands.h"
#include "apps/camera/frame_stream.h"

namespace ostrel::apps::cli {

// The stream has ended: FrameStream::resume(), told of.
FrameStream::Result reconnect(FrameStream& stream, CapturedFrame& frame, double seconds,
                              const Context& context);

} // namespace ostrel::apps::cli

#endif
