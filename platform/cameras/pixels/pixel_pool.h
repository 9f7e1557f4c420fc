// Pixel memory that is used again instead of being allocated for each frame: pages fresh from the kernel cost
// twenty times what writing to them costs.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_PIXEL_POOL_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_PIXEL_POOL_H

#include "base/frame_memory.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pixels {

// Thread-safe. Blocks may outlive the pool: they are freed then.
class PixelPool {
    struct Memory {
        FrameMemory bytes;
        size_t size = 0;
    };
    struct Shelf;

public:
    // Memory on loan, bound to one thread; its contents are undefined at first. An empty block holds none.
    // Giving back neither allocates nor throws.
    class Block {
    public:
        Block() = default;
        Block(Block&&) noexcept = default;
        Block& operator=(Block&& other) noexcept;
        ~Block() { giveBack(); }
        explicit operator bool() const { return memory_.bytes.data() != nullptr; }
        uint8_t* data() const { return memory_.bytes.data(); }

    private:
        friend class PixelPool;
        Block(std::shared_ptr<Shelf> shelf, Memory memory)
            : shelf_(std::move(shelf)), memory_(std::move(memory)) {}
        void giveBack();
        std::shared_ptr<Shelf> shelf_;
        Memory memory_;
    };

    // Two captures converting at the same time use four blocks each at most.
    static const size_t kSpareBlocks = 8;

    // Keeps this many blocks that are not in use.
    explicit PixelPool(size_t spareBlocks = kSpareBlocks);
    ~PixelPool() { retire(); }
    PixelPool(const PixelPool&) = delete;
    PixelPool& operator=(const PixelPool&) = delete;

    // Aligned for every vector instruction. Throws std::bad_alloc when there is no memory.
    Block take(size_t bytes);
    // Frees what lies unused, and from now on whatever comes back.
    void retire();
    // How many blocks were ever allocated.
    uint64_t allocations() const;

private:
    const std::shared_ptr<Shelf> shelf_;
};

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
