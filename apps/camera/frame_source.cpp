#include "apps/camera/frame_source.h"

#include "apps/camera/camera_return.h"
#include "apps/camera/stream_report.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <ostrel/devices.h>

#include <algorithm>
#include <thread>

namespace ostrel::apps::cli {

namespace {

const std::chrono::milliseconds BEFORE_FIRST_FRAME(5);
const std::chrono::milliseconds SHORTEST_PAUSE(1);
const std::chrono::milliseconds LONGEST_POLL(10);
// Keeps Ctrl-C quick with cameras that deliver a frame every few seconds.
const std::chrono::milliseconds LONGEST_PAUSE(50);

Clock::duration seconds(double value) {
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(value));
}

// Frames that the camera took and that never reached a capture.
uint64_t lostOnTheWay(const OVideoStatistics& statistics) {
    uint64_t sum = statistics.skipped + statistics.lost;
    for (const uint64_t dropped : statistics.dropped)
        sum += dropped;
    return sum;
}

} // namespace

void PollPace::frameArrived(Clock::time_point when, uint32_t framesSinceLast) {
    if (started_) {
        const Clock::duration interval = (when - last_) / std::max(framesSinceLast, 1U);
        // One late frame must not slow the polling down for long.
        interval_ = interval_ == Clock::duration::zero() ? interval : (interval_ * 7 + interval) / 8;
    }
    started_ = true;
    last_ = when;
}

// No frame comes in the first half of an interval; after that, eight looks an interval find it early.
Clock::duration PollPace::pause(Clock::time_point now) const {
    if (interval_ == Clock::duration::zero())
        return BEFORE_FIRST_FRAME;
    const Clock::duration quiet = last_ + interval_ / 2 - now;
    const Clock::duration poll = std::clamp<Clock::duration>(interval_ / 8, SHORTEST_PAUSE, LONGEST_POLL);
    return std::min<Clock::duration>(std::max(quiet, poll), LONGEST_PAUSE);
}

FrameSource::FrameSource(const Camera& camera, const Size& size, const StopRequest& stop)
    : camera_(camera), size_(size), stop_(stop) {
    if (!capture_.start(QString::fromStdString(camera_.identifier), size_))
        throw Failure(EXIT_NO_SUCH_CAMERA, "the camera " + quoted(camera_.name) +
                                               " has gone: plug it in again, 'ostrel-camera list' shows "
                                               "those that are there");
}

FrameSource::Result FrameSource::next(VideoFrame& frame, double timeoutSeconds) {
    const Clock::time_point deadline = Clock::now() + seconds(timeoutSeconds);
    while (!stop_.raised()) {
        if (capture_.fetch(frame) == Capture::Fetched::New) {
            count();
            return Result::Frame;
        }
        const std::string refusal = capture_.refusal().toStdString();
        if (!refusal.empty())
            throw Failure(EXIT_CANNOT_OPEN, "cannot use the camera " + quoted(camera_.name) + ": " + refusal);
        const OVideoCameraState known = state();
        if (known.isOpen() && !known.ended().isEmpty())
            return Result::Ended;
        const Clock::time_point now = Clock::now();
        if (now >= deadline)
            return Result::TimedOut;
        std::this_thread::sleep_for(std::min(pace_.pause(now), deadline - now));
    }
    return Result::Stopped;
}

void FrameSource::count() {
    const Clock::time_point now = Clock::now();
    if (figures_.taken == 0)
        first_ = now;
    if (capture_.advance() == 0) // frames before the first one of a stream are nobody's loss
        lostBefore_ = lostOnTheWay(statistics());
    else
        figures_.missed += capture_.advance() - 1;
    ++figures_.taken;
    figures_.seconds = std::chrono::duration<double>(now - first_).count();
    pace_.frameArrived(now, capture_.advance());
}

uint64_t FrameSource::lost() const {
    const uint64_t onTheWay = lostOnTheWay(statistics());
    return figures_.missed + lostEarlier_ + (onTheWay > lostBefore_ ? onTheWay - lostBefore_ : 0);
}

FrameSource::Result FrameSource::resume(VideoFrame& frame, double seconds) {
    ended_ = endReason(); // a start forgets it
    lostEarlier_ = lost() - figures_.missed;
    lostBefore_ = lostOnTheWay(statistics());
    capture_.stop();
    pace_ = PollPace();
    const double before = figures_.seconds;
    CameraReturn camera(camera_.identifier, stop_, seconds);
    while (camera.wait()) {
        Result result = Result::Ended;
        try {
            if (capture_.start(QString::fromStdString(camera_.identifier), size_))
                result = next(frame, camera.secondsLeft());
        } catch (const Failure&) { // it may be in use, or not be ready yet
        }
        if (result == Result::Frame) {
            figures_.away += figures_.seconds - before;
            ++figures_.returns;
            ended_.clear();
            return result;
        }
        capture_.stop();
    }
    ended_ += "; it did not come back within " + QString::number(seconds).toStdString() + " s";
    return stop_.raised() ? Result::Stopped : Result::Ended;
}

std::string FrameSource::whyNothingCame() const {
    const OVideoCameraState known = state();
    const QString identifier = QString::fromStdString(camera_.identifier);
    if (!known.whyNoFrames().isEmpty())
        return known.whyNoFrames().toStdString();
    if (!known.isOpen() && !videoDevices().contains(identifier))
        return "it is no longer attached";
    if (figures_.taken == 0 && !known.statistics().dropped.isEmpty())
        return "what it sends is broken, dropped " + droppedText(known.statistics());
    if (figures_.taken == 0 && known.statistics().delivered > 0)
        return "its frames do not have the size " + toString(size_) + ", try another --size";
    return "check its cable and privacy switch, or allow more time with --timeout";
}

std::string FrameSource::timeoutReason(double timeoutSeconds) const {
    return "no frame from " + quoted(camera_.name) + " within " +
           QString::number(timeoutSeconds).toStdString() + " s: " + whyNothingCame() +
           "; 'ostrel-camera doctor' examines it";
}

std::string FrameSource::endReason() const {
    if (!ended_.empty())
        return ended_;
    return "the camera " + quoted(camera_.name) + " stopped: " + state().ended().toStdString();
}

} // namespace ostrel::apps::cli
