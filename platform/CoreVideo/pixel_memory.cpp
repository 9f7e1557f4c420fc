#include "platform/CoreVideo/pixel_memory.h"

namespace ostrel {

std::shared_ptr<uint8_t> takeShared(cameras::pixels::PixelPool& pool, size_t bytes) {
    const auto block = std::make_shared<cameras::pixels::PixelPool::Block>(pool.take(bytes));
    return std::shared_ptr<uint8_t>(block, block->data());
}

} // namespace ostrel
