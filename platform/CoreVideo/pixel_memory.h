// A block of a pool as the memory of a picture.
#ifndef OSTREL_PLATFORM_COREVIDEO_PIXEL_MEMORY_H
#define OSTREL_PLATFORM_COREVIDEO_PIXEL_MEMORY_H

#include "platform/cameras/pixels/pixel_pool.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ostrel {

// Goes back to the pool with the last reference, on any thread. Throws std::bad_alloc when there is no
// memory.
std::shared_ptr<uint8_t> takeShared(cameras::pixels::PixelPool& pool, size_t bytes);

} // namespace ostrel

#endif
