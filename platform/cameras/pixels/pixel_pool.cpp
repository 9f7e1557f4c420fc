#include "platform/cameras/pixels/pixel_pool.h"

#include <algorithm>
#include <new>
#include <sys/mman.h>

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

// A cache line, and enough for every vector instruction that the conversions use.
const size_t kAlignment = 64;

// With pages of 4 KiB, the addresses of a large picture's 900 pages are looked up again for each frame:
// converting into pages of this size took a fifth less time, and copying from them a twelfth.
const size_t kHugePage = 2 * 1024 * 1024;

uint8_t* allocate(size_t size) {
    if (size > SIZE_MAX - kHugePage)
        throw std::bad_alloc();
    const size_t alignment = size < kHugePage ? kAlignment : kHugePage;
    const size_t rounded = (size + alignment) / alignment * alignment;
    void* const bytes = std::aligned_alloc(alignment, rounded);
    if (!bytes)
        throw std::bad_alloc();
    if (alignment == kHugePage)
        ::madvise(bytes, rounded, MADV_HUGEPAGE); // refused where the kernel has none: it serves all the same
    return static_cast<uint8_t*>(bytes);
}

} // namespace

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
    memory.bytes.reset(allocate(bytes));
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
    if (memory_.bytes)
        shelf_->put(memory_);
    shelf_.reset();
    memory_ = Memory();
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
