#include "apps/common/capture.h"

namespace ostrel::apps {

namespace {

// A start forgets the refusal of the one before as soon as its thread runs; one that is still there after so
// long is its own.
const std::chrono::milliseconds THREAD_RUNS(500);

} // namespace

bool Capture::start(const QString& identifier, const Size& size) {
    stop();
    any_ = false;
    identifier_ = identifier;
    start_ = std::chrono::steady_clock::now();
    oldRefusal_ = state().refused();
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

QString Capture::refusal() {
    const QString refused = state().refused();
    if (refused.isEmpty())
        oldRefusal_.clear();
    const bool mayBeOld = refused == oldRefusal_ && std::chrono::steady_clock::now() - start_ < THREAD_RUNS;
    return mayBeOld ? QString() : refused;
}

} // namespace ostrel::apps
