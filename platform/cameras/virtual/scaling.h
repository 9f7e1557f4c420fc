// Scaling of whole pictures.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_SCALING_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_SCALING_H

#include <cstdint>

namespace ostrel {
namespace cameras {

// A picture of B, G, R, A, top row first, rows `stride` bytes apart.
template <typename Byte>
struct BgraPicture {
    Byte* pixels;
    int width;
    int height;
    int stride;
};

// Fills `to` with the whole of `from` and sets every A to 255. Copies when the sizes are equal. False when
// the sizes are beyond what can be scaled. Re-entrant.
bool scalePicture(const BgraPicture<const uint8_t>& from, const BgraPicture<uint8_t>& to);

// Sets every A to 255.
void makeOpaque(const BgraPicture<uint8_t>& picture);

} // namespace cameras
} // namespace ostrel

#endif
