// 32-bit signed arithmetic that wraps: sizes, strides and offsets are formed in it, and overflow of a plain
// int would be undefined.
#ifndef OSTREL_PROCESSING_WRAPPING_H
#define OSTREL_PROCESSING_WRAPPING_H

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

} // namespace wrapping
} // namespace ostrel

#endif
