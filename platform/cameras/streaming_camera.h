// A camera's life, for every kind: who has it open, who shares its stream, how it ends.
#ifndef OSTREL_PLATFORM_CAMERAS_STREAMING_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_STREAMING_CAMERA_H

#include "platform/cameras/camera.h"
#include "platform/cameras/stream.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// Thread-safe. Blocking operations take turns; everything that only asks looks at the state under a lock that
// is never held while the backend works, a sink is called or a thread is waited for.
//
//   state     open()    start()             stop() of the last   close()     may block
//   Closed    -> Open   refused: not open   nothing              nothing     open
//   Open      nothing   -> Running          nothing              -> Closed   start, close
//   Running   nothing   joins the stream,   -> Open              -> Closed   a join that changes the mode,
//                       maybe in a new mode                                  the last stop, close
//   Ended     nothing   -> Running, with    -> Open              -> Closed   start, the last stop, close
//                       a new stream
//   Gone, besides any of these, once the hardware has left or unplug() was called: a running stream ends,
//   open() and start() are refused; stop() and close() work as ever.
//
// Any thread may call anything, a sink from inside its call too. What would have to wait there for the very
// call that it comes from is left to whoever has the turn: stop() and close() return at once, a start() is
// refused while the stream is being stopped, and a join changes the mode once that call has returned. A
// close() has a join give up waiting.
class StreamingCamera : public Camera {
public:
    struct Identity {
        std::string identifier;
        std::string displayName;
        std::string where; // for messages: "HD Webcam (/dev/video0)"
        CameraDetails details = {};
        std::vector<uint64_t> devices = {}; // numbers (st_rdev) of its device nodes
    };

    StreamingCamera(Identity identity, std::shared_ptr<Backend> backend,
                    std::shared_ptr<Totals> totals = std::make_shared<Totals>());
    ~StreamingCamera() override;

    std::string identifier() const override { return identity_.identifier; }
    std::string displayName() const override { return identity_.displayName; }
    CameraDetails details() const override { return identity_.details; }
    std::vector<uint64_t> devices() const override { return identity_.devices; }
    Error modes(NativeModes& modes) override;
    Error open() override;
    void close() override;
    Error admitInput() override;
    Error start(int width, int height, const std::shared_ptr<FrameSink>& sink) override;
    void stop(const std::shared_ptr<FrameSink>& sink) override;
    bool mayBeOpened() const override { return backend_->mayBeOpened(); }
    bool attached() const override;
    StreamStatistics statistics() const override;
    std::shared_ptr<Controls> controls() const override { return backend_->controls(); }

    // Returns when every sink was told that the stream has ended; from inside a sink's call, at once.
    void unplug();

private:
    using Lock = std::unique_lock<std::mutex>;
    class Turn;

    bool isInsideCall() const { return stream_ && stream_->sinks().insideCall(); }
    void askForModes(Lock& lock);
    void settle(Lock& lock);
    void finishStream(Lock& lock);
    void remember(const std::shared_ptr<Stream>& finished);
    void closeBackend(Lock& lock);
    Error startStream(Lock& lock, const Size& size, const std::shared_ptr<FrameSink>& sink);

    const Identity identity_;
    const std::shared_ptr<Backend> backend_;
    const std::shared_ptr<Totals> totals_;

    mutable std::mutex mutex_; // of the rest
    std::condition_variable turnIsOver_;
    bool busy_ = false;        // somebody has the turn
    bool asking_ = false;      // to ask for the modes
    bool modesAsked_ = false;  // at least once
    bool closeWanted_ = false; // by one who could not wait for the turn
    bool open_ = false;
    bool gone_ = false;
    std::shared_ptr<Stream> stream_; // starting, running, ended, or being finished
    // From inside a sink's call that may still be in progress. Places are used again, never taken away; there
    // is always room for the stream's.
    std::vector<std::weak_ptr<Stream>> finished_;
    std::shared_ptr<Figures> figures_; // of the newest stream
    NativeModes modes_;                // as they were when they were asked for last
    Error modesUnknown_;               // why they are not known, or not all of them
};

} // namespace cameras
} // namespace ostrel

#endif
