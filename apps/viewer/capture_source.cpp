#include "apps/viewer/capture_source.h"

namespace ostrel::apps::viewer {

namespace {

// Slow cameras need two seconds for their first frame.
const std::chrono::seconds PATIENCE(3);
// Much longer than the library takes to count a frame, much shorter than a person notices.
const std::chrono::milliseconds SECOND_LOOK(100);

} // namespace

void CaptureSource::start(const QString& cameraId, const Size& size) {
    stop();
    state_ = State::Starting;
    since_ = Clock::now();
    log_.emplace();
    if (!capture_.start(cameraId, size))
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
    capture_.stop();
    log_.reset();
    state_ = state;
}

bool CaptureSource::poll() {
    if (!capture_.started())
        return false;
    const Capture::Fetched fetched = capture_.fetch(frame_);
    const Clock::time_point now = Clock::now();
    if (isToBeShown(fetched, now))
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

// The picture of the last frame may come only with the second look: see Capture::fetch().
bool CaptureSource::isToBeShown(Capture::Fetched fetched, Clock::time_point now) {
    if (fetched == Capture::Fetched::New) {
        log_.reset();
        state_ = State::Live;
        since_ = now;
        shownTwice_ = false;
        meter_.frameArrived(frame_.frameNumber, now);
        return true;
    }
    if (fetched == Capture::Fetched::Nothing || shownTwice_ || now - since_ < SECOND_LOOK)
        return false;
    shownTwice_ = true;
    return true;
}

void CaptureSource::lookForFailure() {
    failure_ = QString::fromStdString(log_->drain().error());
    if (!failure_.isEmpty())
        end(State::Failed);
}

} // namespace ostrel::apps::viewer
