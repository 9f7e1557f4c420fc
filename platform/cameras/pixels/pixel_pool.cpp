#include "platform/cameras/pixels/pixel_pool.h"

#include "base/monotonic_clock.h"

#include <iterator>
#include <mutex>
#include <utility>

namespace ostrel {
namespace cameras {
namespace pixels {

// Mappings are given back to the system when the lock is open again: that takes longer than all else here.
class PixelPool::Shelf {
public:
    explicit Shelf(int64_t keptUnused) : keptUnused_(keptUnused) {}

    // Never destroyed: frames may come back while the process ends.
    static const std::shared_ptr<Shelf>& ofTheProcess() {
        static const auto* const shelf = new std::shared_ptr<Shelf>(std::make_shared<Shelf>(KEPT_UNUSED));
        return *shelf;
    }

    void addUser() {
        std::lock_guard<std::mutex> lock(mutex_);
        ++users_;
    }

    void removeUser() {
        std::list<Memory> freed;
        std::lock_guard<std::mutex> lock(mutex_);
        --users_;
        freed.swap(spare_);
    }

    // The smallest block that is large enough, but none of more than twice the size: it would stay in use for
    // a picture that needs half of it. Of equal ones the last that came back: the cache still has it, and the
    // others become old. None when there is none.
    std::list<Memory> find(size_t bytes) {
        std::list<Memory> found;
        std::lock_guard<std::mutex> lock(mutex_);
        auto best = spare_.end();
        for (auto it = spare_.begin(); it != spare_.end(); ++it)
            if (it->size >= bytes && it->size / 2 <= bytes && (best == spare_.end() || it->size < best->size))
                best = it;
        if (best != spare_.end())
            found.splice(found.begin(), spare_, best);
        return found;
    }

    void put(std::list<Memory> memory) {
        std::list<Memory> old;
        const int64_t now = monotonicNanoseconds();
        memory.front().unusedSince = now;
        std::lock_guard<std::mutex> lock(mutex_);
        if (users_ == 0)
            return;
        while (!spare_.empty() && now - spare_.back().unusedSince >= keptUnused_)
            old.splice(old.begin(), spare_, std::prev(spare_.end()));
        spare_.splice(spare_.begin(), memory);
    }

private:
    const int64_t keptUnused_;
    std::mutex mutex_;
    std::list<Memory> spare_; // the last that came back first
    int users_ = 0;
};

const int64_t PixelPool::KEPT_UNUSED;

PixelPool::PixelPool() : PixelPool(Shelf::ofTheProcess()) {}

PixelPool::PixelPool(int64_t keptUnused) : PixelPool(std::make_shared<Shelf>(keptUnused)) {}

PixelPool::PixelPool(std::shared_ptr<Shelf> shelf) : shelf_(std::move(shelf)) {
    shelf_->addUser();
}

PixelPool::Block PixelPool::take(size_t bytes) {
    Block block;
    block.memory_ = shelf_->find(bytes);
    if (block.memory_.empty()) {
        ++allocations_;
        block.memory_.emplace_back();
        block.memory_.front().bytes = FrameMemory(bytes);
        block.memory_.front().size = bytes;
    }
    block.shelf_ = shelf_;
    return block;
}

void PixelPool::retire() {
    if (!retired_.exchange(true))
        shelf_->removeUser();
}

PixelPool::Block& PixelPool::Block::operator=(Block&& other) noexcept {
    if (this != &other) {
        giveBack();
        shelf_ = std::move(other.shelf_);
        memory_ = std::move(other.memory_);
    }
    return *this;
}

void PixelPool::Block::giveBack() {
    if (shelf_)
        shelf_->put(std::move(memory_));
    shelf_.reset();
    memory_.clear();
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
