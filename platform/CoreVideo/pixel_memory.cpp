#include "platform/CoreVideo/pixel_memory.h"

#include <cstdlib>

namespace ostrel {

namespace {
// A cache line, and enough for every vector instruction that the conversions use.
constexpr size_t ALIGNMENT = 64;
} // namespace

std::shared_ptr<PixelMemoryPool> PixelMemoryPool::make(size_t blockSize) {
    return std::shared_ptr<PixelMemoryPool>(new PixelMemoryPool(blockSize));
}

std::shared_ptr<uint8_t> PixelMemoryPool::take() {
    uint8_t* block = nullptr;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!idle_.empty()) {
            block = idle_.back().release();
            idle_.pop_back();
        }
    }
    if (!block) {
        if (blockSize_ > SIZE_MAX - ALIGNMENT)
            return nullptr;
        const size_t rounded = (blockSize_ + ALIGNMENT) / ALIGNMENT * ALIGNMENT;
        block = static_cast<uint8_t*>(std::aligned_alloc(ALIGNMENT, rounded));
        if (!block)
            return nullptr;
    }
    const std::weak_ptr<PixelMemoryPool> pool = shared_from_this();
    return std::shared_ptr<uint8_t>(block, [pool](uint8_t* returned) {
        if (const auto owner = pool.lock())
            owner->giveBack(returned);
        else
            std::free(returned);
    });
}

void PixelMemoryPool::giveBack(uint8_t* block) {
    Block returned(block, std::free);
    std::lock_guard<std::mutex> lock(mutex_);
    if (idle_.size() < MOST_IDLE)
        idle_.push_back(std::move(returned));
}

} // namespace ostrel
