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

// Thread-safe. One thread at a time calls sinks, and no lock is held during a call. Once it has ended or was
// shut, nothing is delivered and no sink is taken in. Delivering and ending allocate nothing.
class SinkList {
public:
    // False when no frame will come any more.
    bool add(const std::shared_ptr<FrameSink>& sink);
    // Waits until no call of this sink is in progress, unless it comes from inside a call. Returns whether
    // the sink was there.
    bool remove(const std::shared_ptr<FrameSink>& sink);
    bool empty() const;
    bool has(const std::shared_ptr<FrameSink>& sink) const;
    // Whether the calling thread is inside a sink's call.
    bool insideCall() const;

    // Calls every sink. False when none of them listens, and, with nobody called, when there is none, from
    // inside a call, and after the end. figures: where the frame is counted before the first call; may be
    // null. A sink that has no memory for the frame costs the others nothing: std::bad_alloc is thrown when
    // all were called.
    bool deliver(const std::shared_ptr<CameraFrame>& frame, Figures* figures = nullptr);
    // Tells every sink, once, that no frame will follow, and returns when that is done. From inside a call:
    // at once, and the sinks are told when that call returns.
    void end(const Error& why);
    // Ends without a word to the sinks: no call is in progress afterwards but the one that it comes from.
    void shut();

private:
    struct Entry {
        std::shared_ptr<FrameSink> sink;
        uint64_t round; // the last one in which it was called
    };
    class Delivering;
    enum class Life { Open, Ending, Told, Shut };
    using Lock = std::unique_lock<std::mutex>;

    bool isInside() const { return delivering_ && deliverer_ == std::this_thread::get_id(); }
    bool finished() const { return life_ == Life::Told || life_ == Life::Shut; }
    template <typename Call>
    void each(Lock& lock, Call call);
    void tell(Lock& lock);

    mutable std::mutex mutex_;
    std::condition_variable idle_;
    std::vector<Entry> entries_;
    uint64_t round_ = 0;
    Life life_ = Life::Open;
    Error why_;
    bool delivering_ = false;
    std::thread::id deliverer_;
    const FrameSink* busy_ = nullptr; // the sink whose call is in progress
};

} // namespace cameras
} // namespace ostrel

#endif
