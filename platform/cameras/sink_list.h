// The sinks of one running stream, and the promise that a removed sink hears nothing more.
#ifndef OSTREL_PLATFORM_CAMERAS_SINK_LIST_H
#define OSTREL_PLATFORM_CAMERAS_SINK_LIST_H

#include "platform/cameras/camera.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ostrel {
namespace cameras {

// Thread-safe. One thread at a time delivers: calls of deliver() and end() exclude each other.
class SinkList {
public:
    void add(const std::shared_ptr<FrameSink>& sink);
    // Waits until no call of this sink is in progress, unless it comes from inside that call. Returns whether
    // the sink was there.
    bool remove(const std::shared_ptr<FrameSink>& sink);
    bool empty() const;

    // Calls every sink. No lock is held during a call.
    void deliver(const std::shared_ptr<CameraFrame>& frame);
    void end(const Error& why);

private:
    template <typename Call>
    void each(Call call);

    mutable std::mutex mutex_;
    std::condition_variable idle_;
    std::vector<std::shared_ptr<FrameSink>> sinks_;
    bool delivering_ = false;
    std::thread::id deliverer_;
    FrameSink* busy_ = nullptr; // the sink whose call is in progress
};

} // namespace cameras
} // namespace ostrel

#endif
