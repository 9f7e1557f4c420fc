// Memory for pictures, recycled: fresh memory from the kernel costs more than filling it.
#ifndef OSTREL_PLATFORM_COREVIDEO_PIXEL_MEMORY_H
#define OSTREL_PLATFORM_COREVIDEO_PIXEL_MEMORY_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {

// Hands out blocks of one size and takes them back. Thread-safe. Blocks may outlive the pool.
class PixelMemoryPool : public std::enable_shared_from_this<PixelMemoryPool> {
public:
    static std::shared_ptr<PixelMemoryPool> make(size_t blockSize);

    // A block with contents that are not defined; null when there is no memory.
    std::shared_ptr<uint8_t> take();

    size_t blockSize() const { return blockSize_; }

private:
    explicit PixelMemoryPool(size_t blockSize);
    void giveBack(uint8_t* block);

    // As many idle blocks as one capture can leave behind: its newest frame and the one that is being read.
    static constexpr size_t MOST_IDLE = 2;

    using Block = std::unique_ptr<uint8_t, void (*)(void*)>;
    const size_t blockSize_;
    std::mutex mutex_;
    std::vector<Block> idle_;
};

} // namespace ostrel

#endif
