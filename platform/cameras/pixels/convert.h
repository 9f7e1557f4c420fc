// Any picture that a camera delivers, as pixels of any size.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_CONVERT_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_CONVERT_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

namespace ostrel {
namespace cameras {
namespace pixels {

// Writes the whole picture, scaled to the output's size. After a fault (fewer bytes than the picture needs,
// one that does not decode, sizes that make no sense) what was written is undefined. Re-entrant. Takes pixel
// memory from the pool only; throws std::bad_alloc when that has none.
//
// Grey is Y, its range expanded, for layouts that have it, and else computed from the colours.
Fault convert(const Picture& picture, const Output& to, PixelPool& pool);

// Copies the planes into the block, and has them point there. The picture must have all of its bytes. Throws
// std::bad_alloc, and leaves the picture alone then.
PixelPool::Block moveToPool(Picture& picture, PixelPool& pool);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
