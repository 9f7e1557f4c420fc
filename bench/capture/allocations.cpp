#include "bench/capture/allocations.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

const size_t LARGE = 64 * 1024;

std::atomic<uint64_t> all{0};
std::atomic<uint64_t> large{0};

void count(size_t size) {
    all.fetch_add(1, std::memory_order_relaxed);
    if (size >= LARGE)
        large.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

// The C library's own, under the names that it keeps for those who replace them.
#pragma GCC visibility push(default) // the other libraries are to find these first
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) {
    count(size);
    return __libc_malloc(size);
}

void* calloc(size_t number, size_t size) {
    count(number * size);
    return __libc_calloc(number, size);
}

void* realloc(void* memory, size_t size) {
    count(size);
    return __libc_realloc(memory, size);
}

void* memalign(size_t alignment, size_t size) {
    count(size);
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    return memalign(alignment, size);
}

// The C library maps under names of its own: these are the mappings of others.
void* mmap(void* address, size_t length, int protection, int flags, int file, off_t offset) noexcept {
    if (flags & MAP_ANONYMOUS)
        count(length);
    return reinterpret_cast<void*>(::syscall(SYS_mmap, address, length, protection, flags, file, offset));
}

int posix_memalign(void** memory, size_t alignment, size_t size) {
    *memory = memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
}
#pragma GCC visibility pop

namespace bench {

uint64_t allocationCount() {
    return all.load(std::memory_order_relaxed);
}

uint64_t largeAllocationCount() {
    return large.load(std::memory_order_relaxed);
}

} // namespace bench
