#include "platform/cameras/sink_list.h"

#include <algorithm>

namespace ostrel {
namespace cameras {

void SinkList::add(const std::shared_ptr<FrameSink>& sink) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (std::find(sinks_.begin(), sinks_.end(), sink) == sinks_.end())
        sinks_.push_back(sink);
}

bool SinkList::remove(const std::shared_ptr<FrameSink>& sink) {
    std::unique_lock<std::mutex> lock(mutex_);
    const auto end = std::remove(sinks_.begin(), sinks_.end(), sink);
    const bool found = end != sinks_.end();
    sinks_.erase(end, sinks_.end());
    if (deliverer_ != std::this_thread::get_id())
        idle_.wait(lock, [&] { return busy_ != sink.get(); });
    return found;
}

bool SinkList::empty() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return sinks_.empty();
}

template <typename Call>
void SinkList::each(Call call) {
    // Declared before the lock: the last reference to a sink may go here, and with it a camera.
    std::shared_ptr<FrameSink> only;
    std::vector<std::shared_ptr<FrameSink>> sinks;
    std::unique_lock<std::mutex> lock(mutex_);
    idle_.wait(lock, [&] { return !delivering_; });
    if (sinks_.empty())
        return;
    if (sinks_.size() > 1)
        sinks = sinks_;
    delivering_ = true;
    deliverer_ = std::this_thread::get_id();
    // A sink may remove itself or another one from inside its call, so the walk goes over a copy. The common
    // case of one sink copies one pointer and allocates nothing.
    const auto visit = [&](const std::shared_ptr<FrameSink>& sink) {
        busy_ = sink.get();
        lock.unlock();
        call(*sink);
        lock.lock();
        busy_ = nullptr;
        idle_.notify_all();
    };
    const auto finish = [&] {
        delivering_ = false;
        deliverer_ = std::thread::id();
        busy_ = nullptr;
        idle_.notify_all();
    };
    try {
        if (sinks.empty()) {
            only = sinks_.front();
            visit(only);
        } else {
            for (const auto& sink : sinks)
                if (std::find(sinks_.begin(), sinks_.end(), sink) != sinks_.end())
                    visit(sink);
        }
    } catch (...) {
        if (!lock.owns_lock())
            lock.lock();
        finish(); // else whoever delivers or removes next would wait for ever
        throw;
    }
    finish();
}

void SinkList::deliver(const std::shared_ptr<CameraFrame>& frame) {
    each([&](FrameSink& sink) { sink.frameArrived(frame); });
}

void SinkList::end(const Error& why) {
    each([&](FrameSink& sink) { sink.streamEnded(why); });
}

} // namespace cameras
} // namespace ostrel
