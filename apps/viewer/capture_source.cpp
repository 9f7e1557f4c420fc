#include "apps/viewer/capture_source.h"

namespace ostrel {
namespace viewer {

namespace {

// Slow cameras need two seconds for their first frame.
const std::chrono::seconds PATIENCE(3);
// Much longer than the library takes to count a frame, much shorter than a person notices.
const std::chrono::milliseconds SECOND_LOOK(100);

} // namespace

void CaptureSource::start(const QString& cameraId, int width, int height) {
    stop();
    state_ = State::Starting;
    since_ = Clock::now();
    log_.emplace();
    // A capture object is started once. The next capture gets a new one.
    capture_ = OVideoCaptureUnix::ptr();
    capture_->startCapture(cameraId.toLatin1().constData(), width, height);
    // A camera that is not attached is refused without a word: the object keeps its size of 0 x 0.
    if (capture_->width() != width)
        end(State::Gone);
}

void CaptureSource::stop() {
    end(State::Idle);
    failure_.clear();
    meter_.reset();
}

void CaptureSource::cameraLeft() {
    end(State::Gone);
}

void CaptureSource::end(State state) {
    capture_.reset(); // dropping the last pointer stops the capture
    log_.reset();
    state_ = state;
}

bool CaptureSource::poll() {
    if (!capture_)
        return false;
    // The library leaves the record alone while it has no frame; it never writes a format of 0.
    frame_.formatId = 0;
    capture_->selfVideoFrame(frame_);
    const Clock::time_point now = Clock::now();
    if (frame_.formatId != 0 && isNew(now))
        return true;

    const bool late = now - since_ >= PATIENCE;
    if (waits())
        lookForFailure();
    if (state_ == State::Starting && late)
        state_ = State::Silent;
    else if (state_ == State::Live && late)
        state_ = State::Stalled;
    return false;
}

// Between new frames the library hands out the same one again. Its number is read a moment after the picture,
// so it may be that of a newer frame already: when no further frame follows, the picture is taken once more.
bool CaptureSource::isNew(Clock::time_point now) {
    if (waits() || frame_.frameNumber != shownNumber_) {
        log_.reset();
        state_ = State::Live;
        since_ = now;
        shownNumber_ = frame_.frameNumber;
        shownTwice_ = false;
        meter_.frameArrived(shownNumber_, now);
        return true;
    }
    if (shownTwice_ || now - since_ < SECOND_LOOK)
        return false;
    shownTwice_ = true;
    return true;
}

void CaptureSource::lookForFailure() {
    failure_ = QString::fromStdString(log_->drain().error());
    if (!failure_.isEmpty())
        end(State::Failed);
}

} // namespace viewer
} // namespace ostrel
