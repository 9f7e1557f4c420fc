// A capture that is polled, and whether what it hands out is new.
#ifndef OSTREL_APPS_COMMON_CAPTURE_H
#define OSTREL_APPS_COMMON_CAPTURE_H

#include "apps/common/size.h"

#include <ostrel/camera_state.h>
#include <ostrel/capture.h>

#include <chrono>

namespace ostrel::apps {

// Bound to one thread.
class Capture {
public:
    enum class Fetched { Nothing, Same, New };

    // Ends the capture before. False when no camera has this identifier.
    bool start(const QString& identifier, const Size& size);
    void stop() { capture_.reset(); }
    bool started() const { return !capture_.isNull(); }

    // Fetches the newest frame into frame, which keeps its memory from call to call. Same: that of the last
    // call again. The library reads a frame's number a moment after its picture and may count one frame more;
    // the picture of that frame then comes as Same.
    Fetched fetch(VideoFrame& frame);
    // How many frames the camera delivered from the new frame before to the last new one; 0 for the first.
    uint32_t advance() const { return advance_; }

    // Why the start was refused, in the library's words; empty as long as it was not.
    QString refusal();
    // What the library knows of the camera at this moment. Of one that is not open yet, it is of earlier.
    OVideoCameraState state() const { return OVideoCameraState(identifier_); }

private:
    QString identifier_;
    std::chrono::steady_clock::time_point start_;
    QString oldRefusal_; // of the start before, until this one has got as far as that
    QSharedPointer<OVideoCaptureUnix> capture_;
    bool any_ = false; // a frame was fetched
    uint32_t lastNumber_ = 0;
    uint32_t advance_ = 0;
};

} // namespace ostrel::apps

#endif
