#include "apps/camera/reconnection.h"

#include "apps/common/text.h"

namespace ostrel::apps::cli {

FrameSource::Result reconnect(FrameSource& source, VideoFrame& frame, double seconds,
                              const Surroundings& around) {
    around.messages.say(source.endReason() + "; waiting up to " + QString::number(seconds).toStdString() +
                        " s for it");
    const double before = source.figures().away;
    const FrameSource::Result result = source.resume(frame, seconds);
    if (result == FrameSource::Result::Frame)
        around.messages.say("the camera is back after " + fixed(source.figures().away - before, 1) + " s");
    return result;
}

} // namespace ostrel::apps::cli
