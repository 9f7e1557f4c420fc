// The frames of one camera, each waited for and handed out once: as pixels, or as the camera's own JPEG.
#ifndef OSTREL_APPS_CAMERA_FRAME_STREAM_H
#define OSTREL_APPS_CAMERA_FRAME_STREAM_H

#include "apps/camera/camera_choice.h"
#include "apps/camera/stop_request.h"
#include "apps/common/size.h"

#include <ostrel/camera_state.h>
#include <ostrel/capture.h>
#include <ostrel/native_frame.h>
#include <ostrel/next_frame.h>

#include <chrono>
#include <memory>
#include <vector>

namespace ostrel::apps::cli {

using Clock = std::chrono::steady_clock;

// What is known about a stream.
struct StreamFigures {
    uint64_t taken = 0;  // frames that next() returned
    uint64_t missed = 0; // frames that the camera delivered and next() did not return
    double seconds = 0;  // from the capture of the first to that of the last frame taken
    double away = 0;     // of these, without the camera: it had stopped and came back
    uint64_t returns = 0;

    // Frames a second that were taken while the camera was there; 0 until there are two.
    double rate() const {
        const double there = seconds - away;
        return there > 0 ? static_cast<double>(taken - 1 - returns) / there : 0;
    }
};

// Keeps its memory from frame to frame.
struct CapturedFrame {
    bool isJpeg = false;    // which of the two below it is
    VideoFrame pixels;      // BGRA at the size asked for
    OVideoNativeFrame jpeg; // as the camera sent it, of that size
    OVideoFrameFacts facts;
};

// Frames that are missing, behind one that was taken.
struct Gap {
    uint64_t after = 0; // which frame that was, from 1
    uint64_t frames = 0;
};

// Captures while it lives. Bound to one thread.
class FrameStream {
public:
    enum class Result {
        Frame,
        TimedOut,
        Stopped, // by a signal
        Ended    // the camera will deliver no more
    };
    enum class Wanted {
        Pixels,
        OwnJpeg // the camera's own JPEG where it sends one of the size, else pixels
    };

    // Throws a Failure when the camera is gone.
    FrameStream(const Camera& camera, const Size& size, Wanted wanted, const StopRequest& stop);
    ~FrameStream();

    // Waits for the newest frame that was not handed out yet; frame is undefined when there is none. Throws a
    // Failure with EXIT_CANNOT_OPEN as soon as the library says that the camera cannot be used.
    Result next(CapturedFrame& frame, double timeoutSeconds);

    // After Ended: waits until the camera is back, and goes on as next() with it; its figures go on too.
    // Frame is the first one, Ended says that none came within so many seconds, in which starts that failed
    // were tried again.
    Result resume(CapturedFrame& frame, double seconds);

    // Why nothing came, as the line of a Failure.
    std::string timeoutReason(double timeoutSeconds) const;
    // Why the camera stopped by itself, likewise.
    std::string endReason() const;

    StreamFigures figures() const { return figures_; }
    // Frames since the first one taken that the camera took and next() did not return, wherever they went.
    uint64_t lost() const;
    // Where they are missing, as far as the frames' numbers tell.
    const std::vector<Gap>& gaps() const { return gaps_; }
    // What the library knows of the camera at this moment.
    OVideoCameraState state() const;
    OVideoStatistics statistics() const { return state().statistics(); }

private:
    bool start();
    void stop();
    int take(CapturedFrame& frame, QString& why);
    bool isOwn(const OVideoNativeFrame& native) const;
    bool isNew(const OVideoFrameFacts& facts) const;
    void count(const OVideoFrameFacts& facts);
    [[noreturn]] void failRefused(const QString& why) const;
    std::string whyNothingCame() const;

    Camera camera_;
    Size size_;
    Wanted wanted_;
    const StopRequest& stop_;
    QSharedPointer<OVideoCaptureUnix> capture_;
    std::unique_ptr<OVideoFrameReader> pixels_;
    std::unique_ptr<OVideoFrameReader> natives_;
    bool tryNatives_; // the frame before was the camera's own, or could have been
    StreamFigures figures_;
    std::vector<Gap> gaps_;
    std::string ended_;
    bool any_ = false;         // a frame was taken since the camera started
    uint64_t lostEarlier_ = 0; // before the camera came back
    uint64_t lostBefore_ = 0;  // before the first frame taken since
    int64_t firstTime_ = 0;    // nanoseconds
    uint32_t number_ = 0;      // of the frame before
    uint32_t sequence_ = 0;
};

} // namespace ostrel::apps::cli

#endif
