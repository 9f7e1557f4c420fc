#include "platform/cameras/sink_list.h"

#include <algorithm>
#include <new>

namespace ostrel {
namespace cameras {

bool SinkList::add(const std::shared_ptr<FrameSink>& sink) {
    Lock lock(mutex_);
    if (life_ != Life::Open)
        return false;
    const bool there =
        std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) { return entry.sink == sink; });
    if (!there)
        entries_.push_back({sink, round_}); // not in a round that is under way
    return true;
}

bool SinkList::remove(const std::shared_ptr<FrameSink>& sink) {
    std::shared_ptr<FrameSink> gone; // let go of outside the lock
    Lock lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const Entry& entry) { return entry.sink == sink; });
    const bool there = found != entries_.end();
    if (there) {
        gone = std::move(found->sink);
        entries_.erase(found);
    }
    if (!isInside())
        idle_.wait(lock, [&] { return busy_ != sink.get(); });
    lock.unlock();
    return there;
}

bool SinkList::empty() const {
    Lock lock(mutex_);
    return entries_.empty();
}

bool SinkList::has(const std::shared_ptr<FrameSink>& sink) const {
    Lock lock(mutex_);
    return std::any_of(entries_.begin(), entries_.end(),
                       [&](const Entry& entry) { return entry.sink == sink; });
}

bool SinkList::insideCall() const {
    Lock lock(mutex_);
    return isInside();
}

// Calls each sink of the list once, also when the list changes under way. The lock is free during a call.
template <typename Call>
void SinkList::each(Lock& lock, Call call) {
    ++round_;
    for (;;) {
        const auto next = std::find_if(entries_.begin(), entries_.end(),
                                       [this](const Entry& entry) { return entry.round != round_; });
        if (next == entries_.end() || life_ == Life::Shut)
            return;
        next->round = round_;
        // The last reference to a sink may go here, and with it a camera: not under the lock.
        std::shared_ptr<FrameSink> sink = next->sink;
        busy_ = sink.get();
        lock.unlock();
        call(*sink);
        lock.lock();
        busy_ = nullptr;
        idle_.notify_all();
        lock.unlock();
        sink.reset();
        lock.lock();
    }
}

// The calling thread delivers while this lives; others wait for that, also when a sink throws.
class SinkList::Delivering {
public:
    Delivering(SinkList& list, Lock& lock) : list_(list), lock_(lock) {
        list_.delivering_ = true;
        list_.deliverer_ = std::this_thread::get_id();
    }
    ~Delivering() {
        if (!lock_.owns_lock())
            lock_.lock();
        list_.delivering_ = false;
        list_.deliverer_ = std::thread::id();
        list_.busy_ = nullptr;
        list_.idle_.notify_all();
    }
    Delivering(const Delivering&) = delete;
    Delivering& operator=(const Delivering&) = delete;

private:
    SinkList& list_;
    Lock& lock_;
};

bool SinkList::deliver(const std::shared_ptr<CameraFrame>& frame, Figures* figures) {
    Lock lock(mutex_);
    if (isInside())
        return false;
    idle_.wait(lock, [this] { return !delivering_ || finished(); });
    if (finished() || entries_.empty())
        return false;
    if (figures)
        figures->countDelivered();
    const Delivering delivering(*this, lock);
    bool poor = false, heard = false;
    each(lock, [&](FrameSink& sink) {
        heard = sink.listens() || heard;
        try {
            sink.frameArrived(frame);
        } catch (const std::bad_alloc&) {
            poor = true;
        }
    });
    if (life_ == Life::Ending) // by one of these calls
        tell(lock);
    if (poor)
        throw std::bad_alloc();
    return heard;
}

void SinkList::tell(Lock& lock) {
    life_ = Life::Told;
    idle_.notify_all();
    each(lock, [this](FrameSink& sink) {
        try {
            sink.streamEnded(why_);
        } catch (const std::bad_alloc&) { // it was told, and the others are still to be
        }
    });
}

void SinkList::end(const Error& why) {
    Lock lock(mutex_);
    if (life_ == Life::Open) {
        life_ = Life::Ending;
        why_.code = why.code;
        try {
            why_.text = why.text;
        } catch (const std::bad_alloc&) {
            why_.text.clear();
        }
    }
    if (isInside())
        return;
    // One who tells the sinks may be told by them to shut the list, and then waits for this thread.
    idle_.wait(lock, [this] { return !delivering_ || life_ == Life::Shut; });
    if (finished())
        return;
    const Delivering delivering(*this, lock);
    tell(lock);
}

void SinkList::shut() {
    Lock lock(mutex_);
    life_ = Life::Shut;
    idle_.notify_all();
    if (!isInside())
        idle_.wait(lock, [this] { return !delivering_; });
}

} // namespace cameras
} // namespace ostrel
