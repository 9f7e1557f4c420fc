#include "platform/cameras/virtual/pixel_pool.h"

namespace ostrel {
namespace cameras {

namespace {

// Two captures that convert at the same time, and one to spare.
const size_t KEPT_BLOCKS = 3;
const size_t ALIGNMENT = 64; // a cache line, and the widest vector

} // namespace

PixelPool::Block& PixelPool::Block::operator=(Block&& other) noexcept {
    if (this != &other) {
        giveBack();
        pool_ = std::move(other.pool_);
        memory_ = std::move(other.memory_);
        size_ = other.size_;
    }
    return *this;
}

void PixelPool::Block::giveBack() {
    if (!memory_)
        return;
    std::lock_guard<std::mutex> lock(pool_->mutex_);
    if (size_ == pool_->idleSize_ && pool_->idle_.size() < KEPT_BLOCKS)
        pool_->idle_.push_back(std::move(memory_));
    memory_.reset();
}

PixelPool::Block PixelPool::take(const std::shared_ptr<PixelPool>& pool, size_t size) {
    std::lock_guard<std::mutex> lock(pool->mutex_);
    if (size != pool->idleSize_) {
        pool->idle_.clear();
        pool->idle_.reserve(KEPT_BLOCKS); // giving back must not allocate, so it cannot fail
        pool->idleSize_ = size;
    }
    if (!pool->idle_.empty()) {
        Memory memory = std::move(pool->idle_.back());
        pool->idle_.pop_back();
        return Block(pool, std::move(memory), size);
    }
    const size_t rounded = (size + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
    Memory memory(static_cast<uint8_t*>(std::aligned_alloc(ALIGNMENT, rounded ? rounded : ALIGNMENT)));
    if (!memory)
        return Block();
    ++pool->allocations_;
    return Block(pool, std::move(memory), size);
}

uint64_t PixelPool::allocations() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return allocations_;
}

} // namespace cameras
} // namespace ostrel
