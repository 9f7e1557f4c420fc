// The frames of the chosen camera, and what to say when none come.
#ifndef OSTREL_APPS_VIEWER_CAPTURE_SOURCE_H
#define OSTREL_APPS_VIEWER_CAPTURE_SOURCE_H

#include "apps/common/capture.h"
#include "apps/viewer/frame_meter.h"

#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <memory>

namespace ostrel::apps::viewer {

// From start() on: Starting -> Live, and from there
//   Starting -> Silent   no frame came in time; goes on waiting, and a frame leads to Live
//   Starting -> Failed   the library said that the camera cannot be used
//   Live     -> Stalled  no new frame for a while; a frame leads back to Live
//   any      -> Gone     the camera is no longer attached
// Bound to one thread with an event loop, as a capture is.
class CaptureSource : public QObject {
    Q_OBJECT

public:
    enum class State { Idle, Starting, Live, Silent, Stalled, Failed, Gone };

    void start(const QString& cameraId, const Size& size);
    void stop();
    void cameraLeft(); // ends the capture; the newest frame stays

    // To be called when frameArrived() is emitted, and now and then besides to notice that nothing comes.
    // True when frame() is a new one.
    bool look();
    // Its memory is used again for the next one.
    const VideoFrame& frame() const { return frame_; }

    State state() const { return state_; }
    bool waits() const { return state_ == State::Starting || state_ == State::Silent; }
    // The library's words: for Failed, and for Silent and Stalled where it knows why. Else empty.
    QString why() const { return why_; }
    FrameMeter& meter() { return meter_; }

signals:
    void frameArrived(); // or the capture has ended

private:
    void end(State state);
    void waitForFrames();
    QString whatIsKnown() const;

    Capture capture_;
    std::unique_ptr<QSocketNotifier> notifier_; // of capture_, as long as that has something to say
    VideoFrame frame_;
    State state_ = State::Idle;
    QString why_;
    FrameMeter meter_;
    Clock::time_point since_; // when the capture was started, then when the newest frame came
};

} // namespace ostrel::apps::viewer

#endif
