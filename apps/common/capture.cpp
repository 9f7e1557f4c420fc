#include "apps/common/capture.h"

namespace ostrel::apps {

bool Capture::start(const QString& identifier, const Size& size) {
    stop();
    any_ = false;
    // A capture object is started once. The next capture gets a new one.
    capture_ = OVideoCaptureUnix::ptr();
    capture_->startCapture(identifier.toLatin1().constData(), size.width, size.height);
    // An unknown camera is refused without a word: the object keeps its size of 0 x 0.
    if (capture_->width() != size.width || capture_->height() != size.height)
        stop();
    return started();
}

Capture::Fetched Capture::fetch(VideoFrame& frame) {
    if (!started())
        return Fetched::Nothing;
    // The library leaves the record alone while it has no frame; it never writes a format of 0.
    frame.formatId = 0;
    capture_->selfVideoFrame(frame);
    if (frame.formatId == 0)
        return Fetched::Nothing;
    if (any_ && frame.frameNumber == lastNumber_)
        return Fetched::Same;
    advance_ = any_ ? frame.frameNumber - lastNumber_ : 0;
    any_ = true;
    lastNumber_ = frame.frameNumber;
    return Fetched::New;
}

} // namespace ostrel::apps
