// Memory whose last byte is followed by a page that cannot be touched. libyuv is not instrumented, so that
// the address sanitizer does not see it leave a buffer; the fence does.
#ifndef OSTREL_FUZZ_FENCED_BUFFER_H
#define OSTREL_FUZZ_FENCED_BUFFER_H

#include "fuzz/support/check.h"

#include <stddef.h>
#include <stdint.h>
#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

class FencedBuffer {
public:
    explicit FencedBuffer(size_t size) : size_(size) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        usable_ = (size + page - 1) / page * page;
        mapped_ = usable_ + page;
        void* const memory =
            mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        CHECK(memory != MAP_FAILED);
        base_ = static_cast<uint8_t*>(memory);
        CHECK(mprotect(base_ + usable_, page, PROT_NONE) == 0);
    }

    ~FencedBuffer() { munmap(base_, mapped_); }

    FencedBuffer(const FencedBuffer&) = delete;
    FencedBuffer& operator=(const FencedBuffer&) = delete;

    uint8_t* data() { return base_ + usable_ - size_; }
    size_t size() const { return size_; }
    uint8_t operator[](size_t index) const { return base_[usable_ - size_ + index]; }

    // Whether the memory before the first byte is still zero.
    bool startIntact() const {
        for (size_t index = 0; index < usable_ - size_; ++index)
            if (base_[index] != 0)
                return false;
        return true;
    }

private:
    size_t size_;
    size_t usable_;
    size_t mapped_;
    uint8_t* base_;
};

} // namespace fuzz

#endif
