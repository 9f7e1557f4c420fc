#include "apps/viewer/capture_source.h"

namespace ostrel::apps::viewer {

namespace {

// Slow cameras need two seconds for their first frame.
const std::chrono::seconds PATIENCE(3);
// Much longer than the library takes to count a frame, much shorter than a person notices.
const std::chrono::milliseconds SECOND_LOOK(100);

QString droppedText(const OVideoStatistics& statistics) {
    QStringList reasons;
    for (auto drop = statistics.dropped.begin(); drop != statistics.dropped.end(); ++drop)
        reasons.append(QString("%1 %2").arg(drop.key()).arg(drop.value()));
    return reasons.isEmpty() ? QString() : QString("Broken pictures: %1").arg(reasons.join(", "));
}

} // namespace

void CaptureSource::start(const QString& cameraId, const Size& size) {
    stop();
    state_ = State::Starting;
    since_ = Clock::now();
    if (!capture_.start(cameraId, size))
        end(State::Gone);
}

void CaptureSource::stop() {
    end(State::Idle);
    why_.clear();
    meter_.reset();
}

void CaptureSource::cameraLeft() {
    end(State::Gone);
}

void CaptureSource::end(State state) {
    capture_.stop();
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
    if (state_ == State::Silent || state_ == State::Stalled)
        why_ = whatIsKnown();
    return false;
}

// The picture of the last frame may come only with the second look: see Capture::fetch().
bool CaptureSource::isToBeShown(Capture::Fetched fetched, Clock::time_point now) {
    if (fetched == Capture::Fetched::New) {
        state_ = State::Live;
        why_.clear();
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
    const QString refusal = capture_.refusal();
    if (refusal.isEmpty())
        return;
    why_ = refusal;
    end(State::Failed);
}

// A camera that is still being opened has only figures of earlier.
QString CaptureSource::whatIsKnown() const {
    const OVideoCameraState known = capture_.state();
    if (!known.isOpen())
        return QString();
    const QString words = known.whyNoFrames();
    return words.isEmpty() ? droppedText(known.statistics()) : words;
}

} // namespace ostrel::apps::viewer
