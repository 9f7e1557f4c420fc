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
    explicit FencedBuffer(size_t size) : m_size(size) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        m_usable = (size + page - 1) / page * page;
        m_mapped = m_usable + page;
        void* const memory =
            mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        CHECK(memory != MAP_FAILED);
        m_base = static_cast<uint8_t*>(memory);
        CHECK(mprotect(m_base + m_usable, page, PROT_NONE) == 0);
    }

    ~FencedBuffer() { munmap(m_base, m_mapped); }

    FencedBuffer(const FencedBuffer&) = delete;
    FencedBuffer& operator=(const FencedBuffer&) = delete;

    uint8_t* data() { return m_base + m_usable - m_size; }
    size_t size() const { return m_size; }
    uint8_t operator[](size_t index) const { return m_base[m_usable - m_size + index]; }

    // Whether the memory before the first byte is still zero.
    bool startIntact() const {
        for (size_t index = 0; index < m_usable - m_size; ++index)
            if (m_base[index] != 0)
                return false;
        return true;
    }

private:
    size_t m_size;
    size_t m_usable;
    size_t m_mapped;
    uint8_t* m_base;
};

} // namespace fuzz

#endif
