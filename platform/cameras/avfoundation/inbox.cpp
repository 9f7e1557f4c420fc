#include "platform/cameras/avfoundation/inbox.h"

#include <new>

namespace ostrel {
namespace cameras {
namespace avfoundation {

using Lock = std::lock_guard<std::mutex>;

// On the framework's queue, where nobody could catch an exception.
void Inbox::put(CVPixelBufferRef buffer) noexcept {
    try {
        std::shared_ptr<AvFrame> frame;
        if (buffer)
            frame = AvFrame::of(buffer, origin_);
        else
            origin_->figures->drop(Drop::Damaged);
        put(frame);
    } catch (const std::bad_alloc&) {
        origin_->figures->drop(Drop::NoMemory);
    }
}

void Inbox::put(const std::shared_ptr<AvFrame>& frame) {
    std::shared_ptr<CameraFrame> before; // let go of outside the lock
    const Lock lock(mutex_);
    if (shut_)
        return;
    news_.signOfLife = true;
    if (frame) {
        if (news_.frame)
            origin_->figures->countSkipped(1);
        before.swap(news_.frame);
        news_.frame = frame;
    }
    wake_.set();
}

void Inbox::fail(const std::string& why) {
    const Lock lock(mutex_);
    if (shut_)
        return;
    news_.broken = true;
    news_.why = why;
    wake_.set();
}

void Inbox::setInterrupted(bool interrupted) {
    const Lock lock(mutex_);
    interrupted_ = interrupted;
    wake_.set();
}

void Inbox::shut() {
    News last; // let go of outside the lock
    const Lock lock(mutex_);
    shut_ = true;
    std::swap(last, news_);
}

Inbox::News Inbox::take() {
    News taken;
    const Lock lock(mutex_);
    wake_.clear();
    std::swap(taken, news_);
    return taken;
}

bool Inbox::isInterrupted() const {
    const Lock lock(mutex_);
    return interrupted_;
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
