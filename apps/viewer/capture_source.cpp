#include "apps/viewer/capture_source.h"

namespace ostrel::apps::viewer {

namespace {

// Slow cameras need two seconds for their first frame.
const std::chrono::seconds TIMEOUT(3);

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
    if (capture_.start(cameraId, size))
        waitForFrames();
    else
        end(State::Gone);
}

void CaptureSource::waitForFrames() {
    const int descriptor = capture_.descriptor();
    if (descriptor < 0)
        return; // who looks now and then sees the frames as well
    notifier_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &CaptureSource::frameArrived);
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
    notifier_.reset();
    capture_.stop();
    state_ = state;
}

bool CaptureSource::look() {
    if (!capture_.started())
        return false;
    const Capture::Waited waited = capture_.next(frame_, 0);
    const Clock::time_point now = Clock::now();
    if (waited == Capture::Waited::Frame) {
        state_ = State::Live;
        why_.clear();
        since_ = now;
        meter_.frameArrived(frame_.frameNumber, now);
        return true;
    }
    const bool late = now - since_ >= TIMEOUT;
    if (waited == Capture::Waited::Over && waits() && capture_.refused()) {
        why_ = capture_.why();
        end(State::Failed);
    } else if (waited == Capture::Waited::Over) {
        notifier_.reset(); // it would call for ever
    }
    if (state_ == State::Starting && late)
        state_ = State::Silent;
    else if (state_ == State::Live && late)
        state_ = State::Stalled;
    if (state_ == State::Silent || state_ == State::Stalled)
        why_ = waited == Capture::Waited::Over ? capture_.why() : whatIsKnown();
    return false;
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
