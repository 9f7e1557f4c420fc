#include "apps/camera/frame_stream.h"

#include "apps/camera/camera_return.h"
#include "apps/camera/jpeg/jpeg_size.h"
#include "apps/camera/stream_report.h"
#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <ostrel/devices.h>

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

const std::size_t MOST_GAPS = 1000; // that are kept
// A driver that starts its numbers again has not lost a billion frames.
const uint32_t LARGEST_GAP = 1000000;

// Frames that the camera took and that never reached a capture.
uint64_t lostOnTheWay(const OVideoStatistics& statistics) {
    uint64_t sum = statistics.skipped + statistics.lost;
    for (const uint64_t dropped : statistics.dropped)
        sum += dropped;
    return sum;
}

// Numbers wrap. 0: none, or the numbers say nothing.
uint32_t missingBetween(uint32_t before, uint32_t now) {
    const uint32_t step = now - before;
    return step == 0 || step > LARGEST_GAP ? 0 : step - 1;
}

} // namespace

FrameStream::FrameStream(const Camera& camera, const Size& size, Wanted wanted, const StopRequest& stop)
    : camera_(camera), size_(size), wanted_(wanted), stop_(stop) {
    if (!start())
        throw Failure(EXIT_NO_SUCH_CAMERA, "the camera " + quoted(camera_.name) +
                                               " has gone: plug it in again, 'ostrel-camera list' shows "
                                               "those that are there");
}

FrameStream::~FrameStream() = default;

// False when no camera has this identifier.
bool FrameStream::start() {
    capture_ = OVideoCaptureUnix::ptr();
    capture_->startCapture(camera_.identifier.c_str(), size_.width, size_.height);
    // An unknown camera is refused without a word: the object keeps its size of 0 x 0.
    if (capture_->width() != size_.width || capture_->height() != size_.height)
        return false;
    pixels_ = std::make_unique<OVideoFrameReader>(capture_);
    tryNatives_ = wanted_ == Wanted::OwnJpeg;
    if (tryNatives_)
        natives_ = std::make_unique<OVideoFrameReader>(capture_);
    any_ = false;
    return true;
}

void FrameStream::stop() {
    natives_.reset();
    pixels_.reset();
    capture_.reset();
}

FrameStream::Result FrameStream::next(CapturedFrame& frame, double timeoutSeconds) {
    const Clock::time_point deadline = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                          std::chrono::duration<double>(timeoutSeconds));
    while (!stop_.raised()) {
        QString why;
        const int answer = take(frame, why);
        if (answer > 0)
            return Result::Frame;
        if (answer < 0 && !any_ && !state().refused().isEmpty())
            failRefused(why);
        if (answer < 0) {
            ended_ = "the camera " + quoted(camera_.name) + " stopped: " + why.toStdString();
            return Result::Ended;
        }
        OVideoFrameReader& waitsFor = tryNatives_ ? *natives_ : *pixels_;
        if (!stop_.wait(waitsFor.descriptor(), deadline))
            return Result::TimedOut;
    }
    return Result::Stopped;
}

FrameStream::Result FrameStream::resume(CapturedFrame& frame, double seconds) {
    std::string reason = ended_; // a start forgets it
    lostEarlier_ = lost() - figures_.missed;
    lostBefore_ = lostOnTheWay(statistics());
    stop();
    const double before = figures_.seconds;
    CameraReturn camera(camera_.identifier, stop_, seconds);
    while (camera.wait()) {
        Result result = Result::Ended;
        try {
            if (start())
                result = next(frame, camera.secondsLeft());
        } catch (const Failure&) { // it may be in use, or not be ready yet
        }
        if (result == Result::Frame) {
            figures_.away += figures_.seconds - before;
            ++figures_.returns;
            return result;
        }
        stop();
    }
    ended_ =
        std::move(reason) + "; it did not come back within " + QString::number(seconds).toStdString() + " s";
    return stop_.raised() ? Result::Stopped : Result::Ended;
}

// 1, 0 or -1, as the library answers. The two readers have a place each: a frame that one has had already is
// the newest of the other.
int FrameStream::take(CapturedFrame& frame, QString& why) {
    if (tryNatives_) {
        const int answer = nextNativeFrame(*natives_, frame.jpeg, 0, &why);
        if (answer < 1)
            return answer;
        frame.facts = frame.jpeg.facts();
        frame.isJpeg = isOwn(frame.jpeg);
        if (frame.isJpeg && !isNew(frame.facts))
            return 0;
        tryNatives_ = frame.isJpeg;
    }
    if (!tryNatives_) {
        const int answer = nextVideoFrame(*pixels_, frame.pixels, 0, &frame.facts, &why);
        if (answer < 1)
            return answer;
        frame.isJpeg = false;
        // The camera may have changed its mode.
        tryNatives_ = wanted_ == Wanted::OwnJpeg && frame.facts.nativeFormat() == "MJPG" &&
                      Size{frame.facts.nativeWidth(), frame.facts.nativeHeight()} == size_;
    }
    count(frame.facts);
    return 1;
}

// Its header counts: some cameras send another size than the one that they were set to.
bool FrameStream::isOwn(const OVideoNativeFrame& native) const {
    return native.format() == "MJPG" && jpegSize(native.data(), native.bytesUsed()) == size_;
}

bool FrameStream::isNew(const OVideoFrameFacts& facts) const {
    return !any_ || facts.number() != number_;
}

void FrameStream::count(const OVideoFrameFacts& facts) {
    if (figures_.taken == 0)
        firstTime_ = facts.captureTime();
    if (!any_) { // frames before the first one of a stream are nobody's loss
        any_ = true;
        lostBefore_ = lostOnTheWay(statistics());
    } else {
        const uint32_t passedOver = missingBetween(number_, facts.number());
        const uint32_t missing = std::max(passedOver, missingBetween(sequence_, facts.sequence()));
        figures_.missed += passedOver;
        if (missing > 0 && gaps_.size() < MOST_GAPS)
            gaps_.push_back({figures_.taken, missing});
    }
    number_ = facts.number();
    sequence_ = facts.sequence();
    ++figures_.taken;
    figures_.seconds = static_cast<double>(facts.captureTime() - firstTime_) / 1e9;
}

uint64_t FrameStream::lost() const {
    const uint64_t onTheWay = lostOnTheWay(statistics());
    return figures_.missed + lostEarlier_ + (onTheWay > lostBefore_ ? onTheWay - lostBefore_ : 0);
}

OVideoCameraState FrameStream::state() const {
    return OVideoCameraState(QString::fromStdString(camera_.identifier));
}

void FrameStream::failRefused(const QString& why) const {
    throw Failure(EXIT_CANNOT_OPEN,
                  "cannot use the camera " + quoted(camera_.name) + ": " + why.toStdString());
}

std::string FrameStream::whyNothingCame() const {
    const OVideoCameraState known = state();
    if (!known.whyNoFrames().isEmpty())
        return known.whyNoFrames().toStdString();
    if (!known.isOpen() && !videoDevices().contains(QString::fromStdString(camera_.identifier)))
        return "it is no longer attached";
    if (figures_.taken == 0 && !known.statistics().dropped.isEmpty())
        return "what it sends is broken, dropped " + droppedText(known.statistics());
    if (figures_.taken == 0 && known.statistics().delivered > 0)
        return "its frames do not have the size " + toString(size_) + ", try another --size";
    return "check its cable and privacy switch, or allow more time with --timeout";
}

std::string FrameStream::timeoutReason(double timeoutSeconds) const {
    return "no frame from " + quoted(camera_.name) + " within " +
           QString::number(timeoutSeconds).toStdString() + " s: " + whyNothingCame() +
           "; 'ostrel-camera doctor' examines it";
}

std::string FrameStream::endReason() const {
    return ended_;
}

} // namespace ostrel::apps::cli
