#include "platform/cameras/pixels/pixel_pool.h"

#include <algorithm>

namespace ostrel {
namespace cameras {
namespace pixels {

struct PixelPool::Shelf {
    explicit Shelf(size_t room) : most(room) { spare.reserve(room); }

    const size_t most;
    std::mutex mutex;
    std::vector<Memory> spare;
    bool retired = false;
    uint64_t allocations = 0;

    // What is left in `memory` is not needed.
    void put(Memory& memory) {
        std::lock_guard<std::mutex> lock(mutex);
        if (retired)
            return;
        if (spare.size() < most) {
            spare.push_back(std::move(memory));
            return;
        }
        // The larger ones are kept: they serve every request that the smaller ones serve.
        const auto smallest = std::min_element(
            spare.begin(), spare.end(), [](const Memory& a, const Memory& b) { return a.size < b.size; });
        if (smallest != spare.end() && smallest->size < memory.size)
            std::swap(*smallest, memory);
    }
};

PixelPool::PixelPool(size_t spareBlocks) : shelf_(std::make_shared<Shelf>(spareBlocks)) {}

PixelPool::Block PixelPool::take(size_t bytes) {
    {
        std::lock_guard<std::mutex> lock(shelf_->mutex);
        auto& spare = shelf_->spare;
        auto best = spare.end();
        for (auto it = spare.begin(); it != spare.end(); ++it)
            if (it->size >= bytes && (best == spare.end() || it->size <= best->size))
                best = it; // of equal ones the last that came back: the cache still has it
        if (best != spare.end()) {
            Memory memory = std::move(*best);
            spare.erase(best);
            return Block(shelf_, std::move(memory));
        }
        ++shelf_->allocations;
    }
    Memory memory;
    memory.bytes = FrameMemory(bytes);
    memory.size = bytes;
    return Block(shelf_, std::move(memory));
}

void PixelPool::retire() {
    std::vector<Memory> freed;
    std::lock_guard<std::mutex> lock(shelf_->mutex);
    shelf_->retired = true;
    freed.swap(shelf_->spare);
}

uint64_t PixelPool::allocations() const {
    std::lock_guard<std::mutex> lock(shelf_->mutex);
    return shelf_->allocations;
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
    if (*this)
        shelf_->put(memory_);
    shelf_.reset();
    memory_ = Memory();
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
