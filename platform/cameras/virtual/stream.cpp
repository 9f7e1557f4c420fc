#include "platform/cameras/virtual/stream.h"

namespace ostrel {
namespace cameras {

// The sinks are being called, until it goes, also by an exception: others wait for that.
class VirtualStream::Call {
public:
    Call(VirtualStream& stream, std::unique_lock<std::mutex>& lock) : stream_(stream), lock_(lock) {
        stream_.calling_ = true;
        stream_.caller_ = std::this_thread::get_id();
    }
    ~Call() {
        if (!lock_.owns_lock())
            lock_.lock();
        stream_.calling_ = false;
        stream_.caller_ = std::thread::id();
        stream_.idle_.notify_all();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

private:
    VirtualStream& stream_;
    std::unique_lock<std::mutex>& lock_;
};

bool VirtualStream::join(const std::shared_ptr<FrameSink>& sink) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (ending_ || shut_)
        return false;
    sinks_.add(sink);
    return true;
}

bool VirtualStream::deliver(const std::shared_ptr<CameraFrame>& frame, uint64_t passedOver) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (insideCall())
        return false;
    // Not only until the caller before is done: one that ends the stream may be waiting for this thread.
    idle_.wait(lock, [this] { return !calling_ || finished(); });
    if (finished() || sinks_.empty())
        return false;
    const Call call(*this, lock);
    lock.unlock();
    figures_->countDelivered(passedOver);
    sinks_.deliver(frame);
    lock.lock();
    if (ending_ && !finished())
        tellEnd(lock);
    return true;
}

void VirtualStream::end(const Error& why) {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!ending_) {
        ending_ = true;
        why_ = why;
        figures_->setEnded(why.text);
    }
    if (insideCall())
        return;
    idle_.wait(lock, [this] { return !calling_; });
    if (finished())
        return;
    const Call call(*this, lock);
    tellEnd(lock);
}

void VirtualStream::tellEnd(std::unique_lock<std::mutex>& lock) {
    ended_ = true;
    const Error why = why_;
    idle_.notify_all();
    lock.unlock();
    sinks_.end(why);
    lock.lock();
}

void VirtualStream::shut() {
    {
        std::unique_lock<std::mutex> lock(mutex_);
        shut_ = true;
        idle_.notify_all();
        if (!insideCall())
            idle_.wait(lock, [this] { return !calling_; });
    }
    // Two may come here at once, one of them from the thread itself: whoever is second must not wait.
    if (!threadStopped_.exchange(true))
        thread_.stop();
}

} // namespace cameras
} // namespace ostrel
