// Recycled pixel memory: fresh memory from the kernel costs many times what is done with it.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PIXEL_POOL_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PIXEL_POOL_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {
namespace cameras {

// Thread-safe. Keeps a few blocks that are not in use, all of the size last asked for.
class PixelPool {
    struct Free {
        void operator()(uint8_t* memory) const { std::free(memory); }
    };
    using Memory = std::unique_ptr<uint8_t[], Free>;

public:
    // One block; gives it back to the pool when it is destroyed. Holds the pool.
    class Block {
    public:
        Block() = default;
        Block(std::shared_ptr<PixelPool> pool, Memory memory, size_t size)
            : pool_(std::move(pool)), memory_(std::move(memory)), size_(size) {}
        Block(Block&&) = default;
        Block& operator=(Block&& other) noexcept;
        ~Block() { giveBack(); }

        explicit operator bool() const { return memory_ != nullptr; }
        uint8_t* data() const { return memory_.get(); }
        size_t size() const { return size_; }

    private:
        void giveBack();

        std::shared_ptr<PixelPool> pool_;
        Memory memory_;
        size_t size_ = 0;
    };

    // Contents are undefined. An empty block when there is no memory.
    static Block take(const std::shared_ptr<PixelPool>& pool, size_t size);
    // How many blocks were ever allocated.
    uint64_t allocations() const;

private:
    mutable std::mutex mutex_;
    std::vector<Memory> idle_;
    size_t idleSize_ = 0;
    uint64_t allocations_ = 0;
};

} // namespace cameras
} // namespace ostrel

#endif
