// One running stream of a camera: the granted format, the buffers, the thread and its sinks.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_STREAM_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_STREAM_H

#include "platform/cameras/delivery_thread.h"
#include "platform/cameras/sink_list.h"
#include "platform/cameras/v4l2/buffer_queue.h"
#include "platform/cameras/v4l2/stream_counters.h"
#include "platform/cameras/v4l2/video_node.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// running -> ended (unplugged, or the driver gave up) -> finished, or running -> finished. Ended, it has
// given the driver everything back by itself; only the sinks have not left yet. Thread-safe but for begin()
// and finish(), which their owner calls once each.
class Stream : public std::enable_shared_from_this<Stream> {
public:
    Stream(const std::shared_ptr<VideoNode>& node, const std::string& where);

    // Starts the capture in the best format for the size, with the sink as its first.
    Error begin(const Size& wanted, const std::shared_ptr<FrameSink>& sink);
    // False when the stream has ended: the sink would hear nothing.
    bool join(const std::shared_ptr<FrameSink>& sink);
    // Waits for a call of this sink in progress, unless it comes from inside.
    void leave(const std::shared_ptr<FrameSink>& sink) { sinks_.remove(sink); }
    bool isDeserted() const { return sinks_.empty(); }

    // Ends the thread and gives everything back to the driver. From inside a sink's call the thread ends once
    // that call returns.
    void finish();
    bool hasEnded() const;
    bool deviceIsGone() const { return gone_.load(std::memory_order_acquire); }
    StreamStatistics statistics() const { return counters_->read(); }

    // Whether the caller is the delivery thread of any stream.
    static bool isDelivering();

private:
    Error negotiate(const Size& wanted, bool multiplanar, Granted& granted);
    void run(const StopSignal& stop);
    Error serve(const StopSignal& stop);
    Error drain(bool broken);
    Error dequeueFailed(int error, bool broken);
    bool isTheLast(const Filled& filled) const;
    bool accept(const Filled& filled);
    void countLost(uint32_t sequence);
    void deliver(const Filled& filled);
    Error ended(int error) const;

    const std::shared_ptr<VideoNode> node_;
    const std::string where_; // for messages
    const std::shared_ptr<StreamCounters> counters_;
    std::shared_ptr<BufferQueue> queue_;
    SinkList sinks_;
    DeliveryThread thread_;
    mutable std::mutex mutex_; // guards ended_ against join()
    bool ended_ = false;
    std::atomic<bool> gone_{false};
    // The delivery thread's own:
    bool sequenceKnown_ = false;
    uint32_t lastSequence_ = 0;
    int failuresInARow_ = 0;
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
