#include "apps/camera/reconnection.h"

#include "apps/common/text.h"

namespace ostrel::apps::cli {

FrameStream::Result reconnect(FrameStream& stream, CapturedFrame& frame, double seconds,
                              const Context& context) {
    context.messages.say(stream.endReason() + "; waiting up to " + QString::number(seconds).toStdString() +
                         " s for it");
    const double before = stream.figures().away;
    const FrameStream::Result result = stream.resume(frame, seconds);
    if (result == FrameStream::Result::Frame)
        context.messages.say("the camera is back after " + fixed(stream.figures().away - before, 1) + " s");
    return result;
}

} // namespace ostrel::apps::cli
