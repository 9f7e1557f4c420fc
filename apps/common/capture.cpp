#include "apps/common/capture.h"

namespace ostrel::apps {

bool Capture::start(const QString& identifier, const Size& size) {
    stop();
    any_ = false;
    why_.clear();
    identifier_ = identifier;
    // A capture object is started once. The next capture gets a new one.
    capture_ = OVideoCaptureUnix::ptr();
    capture_->startCapture(identifier.toLatin1().constData(), size.width, size.height);
    // An unknown camera is refused without a word: the object keeps its size of 0 x 0.
    if (capture_->width() != size.width || capture_->height() != size.height)
        capture_.reset();
    else
        reader_ = std::make_unique<OVideoFrameReader>(capture_);
    return started();
}

void Capture::stop() {
    reader_.reset();
    capture_.reset();
}

Capture::Waited Capture::next(VideoFrame& frame, int milliseconds) {
    if (!started())
        return Waited::Nothing;
    const int answer = nextVideoFrame(*reader_, frame, milliseconds, nullptr, &why_);
    if (answer <= 0)
        return answer < 0 ? Waited::Over : Waited::Nothing;
    advance_ = any_ ? frame.frameNumber - lastNumber_ : 0;
    any_ = true;
    lastNumber_ = frame.frameNumber;
    return Waited::Frame;
}

int Capture::descriptor() {
    return started() ? reader_->descriptor() : -1;
}

} // namespace ostrel::apps
