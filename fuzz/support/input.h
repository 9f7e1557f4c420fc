// The bytes of one fuzzer input, read as numbers from the front; all zeros once they are used up.
#ifndef OSTREL_FUZZ_INPUT_H
#define OSTREL_FUZZ_INPUT_H

#include <stddef.h>
#include <stdint.h>

namespace fuzz {

class Input {
public:
    Input(const uint8_t* data, size_t size) : next_(data), left_(size) {}

    uint8_t byte() {
        if (left_ == 0)
            return 0;
        --left_;
        return *next_++;
    }

    // Four bytes, the lowest first: any int.
    int32_t number() {
        uint32_t value = 0;
        for (int shift = 0; shift < 32; shift += 8)
            value |= static_cast<uint32_t>(byte()) << shift;
        return static_cast<int32_t>(value);
    }

    // Two bytes folded into low..high, both included.
    int between(int low, int high) {
        const int value = byte() + byte() * 256;
        return low + value % (high - low + 1);
    }

    // The bytes that are left, over and over: pixels.
    void fill(uint8_t* to, size_t count) const {
        for (size_t index = 0; index < count; ++index)
            to[index] = left_ == 0 ? static_cast<uint8_t>(index * 7) : next_[index % left_];
    }

private:
    const uint8_t* next_;
    size_t left_;
};

} // namespace fuzz

#endif
