// Pixel memory that is used again instead of being allocated for each frame: pages fresh from the kernel cost
// twenty times what writing to them costs.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_SCRATCH_POOL_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_SCRATCH_POOL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {
namespace cameras {
namespace pixels {

// Thread-safe. Blocks may outlive the pool.
class ScratchPool {
    struct Memory {
        std::unique_ptr<uint8_t[]> bytes;
        size_t size = 0;
    };
    struct Shelf;

public:
    // Memory on loan, bound to one thread; its contents are undefined at first. An empty block holds none.
    class Block {
    public:
        Block() = default;
        Block(Block&&) noexcept = default;
        Block& operator=(Block&& other) noexcept;
        ~Block() { giveBack(); }
        uint8_t* data() const { return memory_.bytes.get(); }

    private:
        friend class ScratchPool;
        Block(std::shared_ptr<Shelf> shelf, Memory memory)
            : shelf_(std::move(shelf)), memory_(std::move(memory)) {}
        void giveBack();
        std::shared_ptr<Shelf> shelf_;
        Memory memory_;
    };

    ScratchPool();
    ~ScratchPool() { retire(); }

    // Throws std::bad_alloc when there is no memory.
    Block take(size_t bytes);
    // Frees what lies unused, and from now on whatever comes back.
    void retire();

private:
    std::shared_ptr<Shelf> shelf_;
};

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
