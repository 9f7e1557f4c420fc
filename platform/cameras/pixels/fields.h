// Pictures whose two fields are stored one after the other.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_FIELDS_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_FIELDS_H

#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

namespace ostrel {
namespace cameras {
namespace pixels {

// For all of these the picture is not a JPEG, its fields are not woven, and it has all of its bytes.

// Whether each field is a picture of half the height.
bool fieldsAreAlike(const Picture& picture);

// The field whose first row is row 0 or row 1 of the picture, in place. For fields that are alike.
Picture fieldOf(const Picture& picture, int firstRow);

// The picture with its rows in order, in memory of the block.
Picture weave(const Picture& picture, PixelPool& pool, PixelPool::Block& block);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
