// The frames of one camera, each waited for and handed out once.
#ifndef OSTREL_APPS_CAMERA_FRAME_SOURCE_H
#define OSTREL_APPS_CAMERA_FRAME_SOURCE_H

#include "apps/camera/camera_choice.h"
#include "apps/camera/stop_request.h"
#include "apps/common/capture.h"

#include <chrono>

namespace ostrel::apps::cli {

using Clock = std::chrono::steady_clock;

// What is known about a stream.
struct StreamFigures {
    uint64_t taken = 0;  // frames that next() returned
    uint64_t missed = 0; // frames that the camera delivered and next() did not return
    double seconds = 0;  // from the first to the last frame taken
    double away = 0;     // of these, without the camera: it had stopped and came back
    uint64_t returns = 0;

    // Frames a second that were taken while the camera was there; 0 until there are two.
    double rate() const {
        const double there = seconds - away;
        return there > 0 ? static_cast<double>(taken - 1 - returns) / there : 0;
    }
};

// Captures while it lives. Bound to one thread.
class FrameSource {
public:
    enum class Result {
        Frame,
        TimedOut,
        Stopped, // by a signal
        Ended    // the camera will deliver no more
    };

    // Throws a Failure when the camera is gone.
    FrameSource(const Camera& camera, const Size& size, const StopRequest& stop);

    // Waits for a frame newer than the last; frame keeps its memory from call to call. Throws a Failure with
    // EXIT_CANNOT_OPEN as soon as the library says that the camera cannot be used.
    Result next(VideoFrame& frame, double timeoutSeconds);

    // After Ended: waits until the camera is back, and goes on as next() with it; its figures go on too.
    // Frame is the first one, Ended says that none came within so many seconds, in which starts that failed
    // were tried again.
    Result resume(VideoFrame& frame, double seconds);

    // Why nothing came, as the line of a Failure.
    std::string timeoutReason(double timeoutSeconds) const;
    // Why the camera stopped by itself, likewise.
    std::string endReason() const;

    StreamFigures figures() const { return figures_; }
    // Frames since the first one taken that the camera took and next() did not return, wherever they went.
    uint64_t lost() const;
    // What the library knows of the camera at this moment.
    OVideoCameraState state() const { return capture_.state(); }
    OVideoStatistics statistics() const { return state().statistics(); }

private:
    void count();
    [[noreturn]] void failRefused() const;
    std::string whyNothingCame() const;

    Camera camera_;
    Size size_;
    const StopRequest& stop_;
    Capture capture_;
    StreamFigures figures_;
    std::string ended_;        // while the camera does not come back
    uint64_t lostEarlier_ = 0; // before the camera came back
    uint64_t lostBefore_ = 0;  // before the first frame taken of the stream
    Clock::time_point first_;
};

} // namespace ostrel::apps::cli

#endif
