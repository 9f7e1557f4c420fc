#include "platform/cameras/pixels/scratch_pool.h"

#include <algorithm>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// Two captures converting at the same time use two blocks each at most.
const size_t kSpareBlocks = 4;

} // namespace

struct ScratchPool::Shelf {
    std::mutex mutex;
    std::vector<Memory> spare;
    bool retired = false;
};

ScratchPool::ScratchPool() : shelf_(std::make_shared<Shelf>()) {
    shelf_->spare.reserve(kSpareBlocks);
}

ScratchPool::Block ScratchPool::take(size_t bytes) {
    {
        std::lock_guard<std::mutex> lock(shelf_->mutex);
        auto& spare = shelf_->spare;
        auto best = spare.end();
        for (auto it = spare.begin(); it != spare.end(); ++it)
            if (it->size >= bytes && (best == spare.end() || it->size < best->size))
                best = it;
        if (best != spare.end()) {
            Memory memory = std::move(*best);
            spare.erase(best);
            return Block(shelf_, std::move(memory));
        }
    }
    Memory memory;
    memory.bytes.reset(new uint8_t[bytes]); // not make_unique, which would fill it with zeros
    memory.size = bytes;
    return Block(shelf_, std::move(memory));
}

void ScratchPool::retire() {
    std::vector<Memory> freed;
    std::lock_guard<std::mutex> lock(shelf_->mutex);
    shelf_->retired = true;
    freed.swap(shelf_->spare);
}

ScratchPool::Block& ScratchPool::Block::operator=(Block&& other) noexcept {
    if (this != &other) {
        giveBack();
        shelf_ = std::move(other.shelf_);
        memory_ = std::move(other.memory_);
    }
    return *this;
}

void ScratchPool::Block::giveBack() {
    if (!memory_.bytes)
        return;
    const std::shared_ptr<Shelf> shelf = std::move(shelf_);
    std::lock_guard<std::mutex> lock(shelf->mutex);
    if (shelf->retired) {
        memory_ = Memory();
        return;
    }
    auto& spare = shelf->spare;
    if (spare.size() < kSpareBlocks) {
        spare.push_back(std::move(memory_));
        return;
    }
    // The larger ones are kept: they serve every request that the smaller ones serve.
    auto smallest = std::min_element(spare.begin(), spare.end(),
                                     [](const Memory& a, const Memory& b) { return a.size < b.size; });
    if (smallest->size < memory_.size)
        std::swap(*smallest, memory_);
    memory_ = Memory();
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
