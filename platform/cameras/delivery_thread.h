// The one thread of a running stream, with a descriptor that wakes it.
#ifndef OSTREL_PLATFORM_CAMERAS_DELIVERY_THREAD_H
#define OSTREL_PLATFORM_CAMERAS_DELIVERY_THREAD_H

#include "base/wake_descriptor.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

namespace ostrel {
namespace cameras {

// Tells the body of a delivery thread that it should return.
class StopSignal {
public:
    StopSignal() = default;
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    bool valid() const { return wake_.valid(); }
    bool raised() const { return raised_.load(std::memory_order_acquire); }
    // Readable as soon as the signal is raised or woken: to be polled beside the camera's own descriptor.
    int descriptor() const { return wake_.descriptor(); }
    // Sleeps until the given time of CLOCK_MONOTONIC in nanoseconds, or until raised or woken. Returns
    // raised().
    bool sleepUntil(int64_t time) const;
    void raise();

    // Makes the descriptor readable, so that whoever waits looks around; not a stop.
    void wake() const { wake_.set(); }
    // The thread has looked around: the next wait is one again, unless the signal was raised.
    void clearWake() const;

private:
    std::atomic<bool> raised_{false};
    const WakeDescriptor wake_;
};

// Owns the thread. start() and stop() are not synchronised with each other: their owner holds its own lock.
class DeliveryThread {
public:
    using Body = std::function<void(const StopSignal&)>;

    DeliveryThread() = default;
    ~DeliveryThread() { stop(); }
    DeliveryThread(const DeliveryThread&) = delete;
    DeliveryThread& operator=(const DeliveryThread&) = delete;

    // name: a string literal. False when the system gives no thread or descriptor. The body must hold what it
    // uses by shared ownership: after a stop from inside it, it outlives the owner.
    bool start(const char* name, Body body);
    // Raises the signal and waits for the body to return. Called on the thread itself it only raises the
    // signal; the thread then ends by itself once the body returns.
    void stop();
    // Raises the signal and waits for nothing. The thread must have been started, and not stopped.
    void raise() { signal_->raise(); }
    const StopSignal& signal() const { return *signal_; }
    bool running() const { return thread_.joinable(); }
    bool isCurrent() const { return thread_.get_id() == std::this_thread::get_id(); }

private:
    std::thread thread_;
    std::shared_ptr<StopSignal> signal_;
};

} // namespace cameras
} // namespace ostrel

#endif
