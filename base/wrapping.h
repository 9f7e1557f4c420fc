// 32-bit signed arithmetic that wraps: sizes, strides and offsets are formed in it, and overflow of a plain
// int would be undefined.
#ifndef OSTREL_BASE_WRAPPING_H
#define OSTREL_BASE_WRAPPING_H

#include <stdint.h>

namespace ostrel {
namespace wrapping {

inline int32_t add(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

inline int32_t mul(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

inline int32_t mul(int32_t a, int32_t b, int32_t c) {
    return mul(mul(a, b), c);
}

inline int32_t neg(int32_t a) {
    return static_cast<int32_t>(0u - static_cast<uint32_t>(a));
}

// base + bytes, also where base is null or the sum lies outside its buffer: such pointers are formed
// before libyuv gets to refuse them, and plain pointer arithmetic would be undefined.
template <typename Byte>
Byte* at(Byte* base, int32_t bytes) {
    return reinterpret_cast<Byte*>(reinterpret_cast<uintptr_t>(base) +
                                   static_cast<uintptr_t>(static_cast<intptr_t>(bytes)));
}

} // namespace wrapping
} // namespace ostrel

#endif
