// Calls that must not hold up the thread that has something to tell.
#ifndef OSTREL_PLATFORM_QTKIT_LATE_CALLS_H
#define OSTREL_PLATFORM_QTKIT_LATE_CALLS_H

#include "platform/cameras/camera.h"
#include "platform/cameras/delivery_thread.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace ostrel {

// Makes calls one after the other on a thread of its own, which there is from the first one on. Of the frames
// that wait the newest is kept. post() and busy() belong to one thread; stop() to any.
class LateCalls {
public:
    using Frame = std::shared_ptr<cameras::CameraFrame>;
    using Call = std::function<void(const Frame&)>;

    // Whether a call is in progress or waits: who calls by itself now would overtake it.
    bool busy() const;
    // call: that of the first post serves all, and is held until stop(). False when there is no thread to be
    // had, or it was stopped.
    bool post(const Frame& frame, Call call);
    // No call is in progress afterwards, unless it comes from inside one, and none will come.
    void stop();

private:
    struct State {
        mutable std::mutex mutex;
        std::condition_variable changed;
        Frame waiting;
        std::thread::id thread;
        bool calling = false;
        bool stopped = false;
    };
    static void run(const std::shared_ptr<State>& state, const Call& call);

    // Shared with the thread, which may outlive this after a stop from inside its call.
    const std::shared_ptr<State> state_ = std::make_shared<State>();
    std::mutex mutex_; // of the thread; not taken on the thread itself
    cameras::DeliveryThread thread_;
};

} // namespace ostrel

#endif
