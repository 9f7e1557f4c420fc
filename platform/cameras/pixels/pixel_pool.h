// Pixel memory that is used again instead of being allocated for each frame: pages fresh from the kernel cost
// twenty times what writing to them costs.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PIXEL_POOL_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PIXEL_POOL_H

#include "base/frame_memory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>

namespace ostrel {
namespace cameras {
namespace pixels {

// Thread-safe. Blocks may outlive the pool.
//
// What lies unused is on one shelf for all pools of the process: many captures that are read in turn need the
// memory for converting a frame once. It holds what was in use lately, and nothing that no pool is there for.
class PixelPool {
    struct Memory {
        FrameMemory bytes;
        size_t size = 0;
        int64_t unusedSince = 0; // monotonic nanoseconds, once it has come back
    };
    class Shelf;

public:
    // Memory on loan, bound to one thread; its contents are undefined at first. An empty block holds none.
    // Giving back neither allocates nor throws.
    class Block {
    public:
        Block() = default;
        Block(Block&&) noexcept = default;
        Block& operator=(Block&& other) noexcept;
        ~Block() { giveBack(); }
        explicit operator bool() const { return !memory_.empty(); }
        uint8_t* data() const { return memory_.empty() ? nullptr : memory_.front().bytes.data(); }

    private:
        friend class PixelPool;
        void giveBack();
        std::shared_ptr<Shelf> shelf_;
        std::list<Memory> memory_; // one, or none; moving it takes no memory
    };

    // A block that nobody takes for so long is freed when another comes back.
    static const int64_t KEPT_UNUSED = 2000000000; // nanoseconds

    PixelPool();
    // With a shelf of its own.
    explicit PixelPool(int64_t keptUnused);
    ~PixelPool() { retire(); }
    PixelPool(const PixelPool&) = delete;
    PixelPool& operator=(const PixelPool&) = delete;

    // Aligned for every vector instruction. Throws std::bad_alloc when there is no memory.
    Block take(size_t bytes);
    // Frees what lies unused: whoever else needs some of it takes it anew. What comes back from now on is
    // kept for the other pools, if there are any.
    void retire();
    // How many blocks this pool has ever allocated.
    uint64_t allocations() const { return allocations_; }

private:
    explicit PixelPool(std::shared_ptr<Shelf> shelf);

    const std::shared_ptr<Shelf> shelf_;
    std::atomic<uint64_t> allocations_{0};
    std::atomic<bool> retired_{false};
};

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
