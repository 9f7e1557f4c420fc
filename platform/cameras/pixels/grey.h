// Pictures of one sample a pixel, and the samples of sixteen bits.
#ifndef OSTREL_PLATFORM_CAMERAS_PIXELS_GREY_H
#define OSTREL_PLATFORM_CAMERAS_PIXELS_GREY_H

#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/scaling.h"

namespace ostrel {
namespace cameras {
namespace pixels {

// One plane, eight bits or more, in any range.
bool isGrey(Layout layout);

// The picture must be grey and have all of its bytes. Re-entrant.
bool greyTo(const Picture& picture, const Output& to, PixelPool& pool);

// Y of the limited range, 16 to 235, as 0 to 255. Not in place: loops over memory of two names are quick
// ones.
void expandRange(const Source& from, const Target& to);

// The high bytes of 16-bit samples, little endian.
void takeHighBytes(const Source& from, const Target& to);

} // namespace pixels
} // namespace cameras
} // namespace ostrel

#endif
