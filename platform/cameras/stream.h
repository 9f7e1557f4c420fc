// One run of a camera, from the first sink's start to the last one's stop.
#ifndef OSTREL_PLATFORM_CAMERAS_STREAM_H
#define OSTREL_PLATFORM_CAMERAS_STREAM_H

#include "platform/cameras/backend.h"
#include "platform/cameras/sink_list.h"
#include "platform/cameras/stall_watch.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {

// Thread-safe but for begin() and finish(), which their owner calls once each, one after the other. The
// delivery thread, where there is one, is the only one to touch the backend between them.
//
//   Starting -> Running    begin() succeeded
//   Running  -> Ended      by itself: unplugged, the driver gave up; the sinks are told
//   any      -> Finished   retire(); after finish() the backend has stopped, no call is in progress and none
//                          will come
class Stream : public Outlet, public std::enable_shared_from_this<Stream> {
public:
    Stream(std::shared_ptr<Backend> backend, std::shared_ptr<Figures> figures, std::string where);

    // Starts the backend for the sinks that were added before.
    Error begin(const Request& request);
    SinkList& sinks() { return sinks_; }

    // Adds a sink that the running mode serves. False, with nothing done, when the stream has ended, is not
    // yet running, or would have to change its mode first.
    bool join(const std::shared_ptr<FrameSink>& sink, const Size& size);
    // Adds a sink whatever it asks for, once it is known whether the stream runs. False, with nothing done,
    // when it does not.
    bool admit(const std::shared_ptr<FrameSink>& sink);
    // Has the mode chosen anew for a sink that was admitted, and waits until that is done or was refused, the
    // sink has left, or the stream is over. From inside a sink's call: when that call returns.
    void widen(const Size& size, const std::shared_ptr<FrameSink>& sink);
    // As SinkList::remove().
    void leave(const std::shared_ptr<FrameSink>& sink);

    // Ends by itself: tells the sinks, once. From inside a call: when that call returns.
    void end(const Error& why);
    // Takes in no sink from now on; unless it is forced, only when there is none. Returns whether it may be
    // finished.
    bool retire(bool force);
    void finish();
    bool deviceIsGone() const { return gone_.load(std::memory_order_acquire); }

    bool deliver(const std::shared_ptr<CameraFrame>& frame) override;
    const std::shared_ptr<Figures>& figures() const override { return figures_; }

private:
    enum class Phase { Starting, Running, Ended, Finished };
    using Lock = std::unique_lock<std::mutex>;

    bool covers(const Size& size) const;
    void run(const StopSignal& stop);
    Error serve(const StopSignal& stop);
    Error changeMode(const StopSignal& stop, const Size& wider);
    Error startWider(const Request& request) noexcept;
    Error revive(const StopSignal& stop);
    Error followSource(const StopSignal& stop);
    Error startAnew(const StopSignal& stop);
    Error resume(const StopSignal& stop);
    Error keepTrying(const StopSignal& stop, Error refused);
    Error startBackend(const Request& request) noexcept;
    void stopBackend();

    const std::shared_ptr<Backend> backend_;
    const std::shared_ptr<Figures> figures_;
    const std::string where_; // for messages
    SinkList sinks_;
    DeliveryThread thread_;
    StallWatch watch_; // the delivery thread's own
    std::atomic<bool> gone_{false};

    mutable std::mutex mutex_; // of the rest
    std::condition_variable changed_;
    Phase phase_ = Phase::Starting;
    bool backendRuns_ = false;
    Request request_; // that the running mode was chosen for
    Size wider_;      // asked for by widen(); 0 x 0 when nothing is
};

} // namespace cameras
} // namespace ostrel

#endif
