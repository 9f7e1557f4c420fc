#include "apps/camera/frame_source.h"

#include "apps/camera/camera_return.h"
#include "apps/camera/stream_report.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <ostrel/devices.h>

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

// Keeps Ctrl-C quick while no frame comes.
const std::chrono::milliseconds LONGEST_WAIT(50);

// Frames that the camera took and that never reached a capture.
uint64_t lostOnTheWay(const OVideoStatistics& statistics) {
    uint64_t sum = statistics.skipped + statistics.lost;
    for (const uint64_t dropped : statistics.dropped)
        sum += dropped;
    return sum;
}

} // namespace

FrameSource::FrameSource(const Camera& camera, const Size& size, const StopRequest& stop)
    : camera_(camera), size_(size), stop_(stop) {
    if (!capture_.start(QString::fromStdString(camera_.identifier), size_))
        throw Failure(EXIT_NO_SUCH_CAMERA, "the camera " + quoted(camera_.name) +
                                               " has gone: plug it in again, 'ostrel-camera list' shows "
                                               "those that are there");
}

FrameSource::Result FrameSource::next(VideoFrame& frame, double timeoutSeconds) {
    const Clock::time_point deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                          std::chrono::duration<double>(timeoutSeconds));
    while (!stop_.raised()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        const auto wait = std::clamp(left, std::chrono::milliseconds(0), LONGEST_WAIT);
        switch (capture_.next(frame, static_cast<int>(wait.count()))) {
        case Capture::Waited::Frame:
            count();
            return Result::Frame;
        case Capture::Waited::Over:
            if (capture_.refused())
                failRefused();
            return Result::Ended;
        case Capture::Waited::Nothing:
            if (left <= std::chrono::milliseconds(0))
                return Result::TimedOut;
        }
    }
    return Result::Stopped;
}

void FrameSource::failRefused() const {
    throw Failure(EXIT_CANNOT_OPEN,
                  "cannot use the camera " + quoted(camera_.name) + ": " + capture_.why().toStdString());
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
