// One run of a virtual camera, from the first sink's start to the last one's stop.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_STREAM_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_STREAM_H

#include "platform/cameras/delivery_thread.h"
#include "platform/cameras/pixels/pixel_pool.h"
#include "platform/cameras/sink_list.h"
#include "platform/cameras/virtual/controls.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace ostrel {
namespace cameras {

// Thread-safe. A delivery thread, when there is one, holds its stream by shared ownership.
class VirtualStream {
public:
    explicit VirtualStream(std::shared_ptr<VirtualControls> controls)
        : figures_(std::make_shared<StreamFigures>(std::move(controls))) {}

    // False when the stream has ended: the sink would hear nothing.
    bool join(const std::shared_ptr<FrameSink>& sink);
    SinkList& sinks() { return sinks_; }
    const std::shared_ptr<StreamFigures>& figures() const { return figures_; }
    // For what frames hold, and what drawing them needs for a moment.
    const std::shared_ptr<pixels::PixelPool>& pool() const { return pool_; }

    bool startThread(DeliveryThread::Body body) { return thread_.start("ostrel-virtual", std::move(body)); }

    // Calls every sink and counts the frame, and those that were passed over for it. False, with nobody
    // called, once the stream has ended or was shut, when there is no sink, and when it comes from inside a
    // sink's call.
    bool deliver(const std::shared_ptr<CameraFrame>& frame, uint64_t passedOver = 0);
    // Tells every sink, once, that no frame will follow, and returns when that is done and no call is in
    // progress. From inside a sink's call: at once, and the sinks are told when that call returns.
    void end(const Error& why);
    // Ends without a word to the sinks: no call is in progress afterwards (but the one that it comes from),
    // and the thread is gone.
    void shut();

private:
    class Call;
    bool finished() const { return ended_ || shut_; }
    bool insideCall() const { return calling_ && caller_ == std::this_thread::get_id(); }
    void tellEnd(std::unique_lock<std::mutex>& lock);

    SinkList sinks_;
    const std::shared_ptr<StreamFigures> figures_;
    const std::shared_ptr<pixels::PixelPool> pool_ = std::make_shared<pixels::PixelPool>();
    DeliveryThread thread_;
    std::atomic<bool> threadStopped_{false};

    std::mutex mutex_; // of the rest; never held during a call
    std::condition_variable idle_;
    bool calling_ = false;
    std::thread::id caller_;
    bool ending_ = false; // end() was called
    bool ended_ = false;  // the sinks were told, or are being told
    bool shut_ = false;
    Error why_;
};

} // namespace cameras
} // namespace ostrel

#endif
