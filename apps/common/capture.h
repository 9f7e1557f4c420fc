// A capture whose frames are waited for.
#ifndef OSTREL_APPS_COMMON_CAPTURE_H
#define OSTREL_APPS_COMMON_CAPTURE_H

#include "apps/common/size.h"

#include <ostrel/camera_state.h>
#include <ostrel/capture.h>
#include <ostrel/next_frame.h>

#include <memory>

namespace ostrel::apps {

// Bound to one thread.
class Capture {
public:
    enum class Waited { Nothing, Frame, Over };

    // Ends the capture before. False when no camera has this identifier.
    bool start(const QString& identifier, const Size& size);
    void stop();
    bool started() const { return !capture_.isNull(); }

    // Waits so many milliseconds for a frame that was not handed out yet, with 0 not at all. frame keeps its
    // memory from call to call. Over: none will come, since refused() or for another reason: why().
    Waited next(VideoFrame& frame, int milliseconds);
    // To wait for next() having something to say, as that of an OVideoFrameReader; valid until stop() or
    // start(). -1 when not started, or when the system has none left.
    int descriptor();
    // How many frames the camera delivered from the frame before to the last one; 0 for the first.
    uint32_t advance() const { return advance_; }

    bool refused() const { return !any_ && !state().refused().isEmpty(); }
    // The library's words.
    QString why() const { return why_; }
    // What the library knows of the camera at this moment. Of one that is not open yet, it is of earlier.
    OVideoCameraState state() const { return OVideoCameraState(identifier_); }

private:
    QString identifier_;
    QSharedPointer<OVideoCaptureUnix> capture_;
    std::unique_ptr<OVideoFrameReader> reader_;
    QString why_;
    bool any_ = false; // a frame was handed out
    uint32_t lastNumber_ = 0;
    uint32_t advance_ = 0;
};

} // namespace ostrel::apps

#endif
