#include "base/frame_memory.h"

#include <new>
#include <stdint.h>
#include <sys/mman.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OSTREL_ADDRESSES_ARE_WATCHED
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define OSTREL_ADDRESSES_ARE_WATCHED
#endif
#ifdef OSTREL_ADDRESSES_ARE_WATCHED
#include <sanitizer/asan_interface.h>
#endif

namespace ostrel {

namespace {

// A cache line, and enough for every vector instruction that the conversions use.
const size_t ALIGNMENT = 64;

// With pages of 4 KiB, the addresses of a large frame's 900 pages are looked up again for each frame:
// converting into pages of this size took a fifth less time, and copying between them a twelfth.
const size_t LARGE_PAGE = 2 * 1024 * 1024;

unsigned char* aligned(unsigned char* block, size_t alignment) {
    return block + (alignment - reinterpret_cast<uintptr_t>(block) % alignment) % alignment;
}

unsigned char* map(size_t bytes) {
    // cppcheck-suppress invalidFunctionArg ; no file
    void* const block = ::mmap(0, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANON, -1, 0);
    if (block == MAP_FAILED)
        throw std::bad_alloc();
    return static_cast<unsigned char*>(block);
}

// The advice is given to mappings of our own only: on memory of the heap it would stay with whoever gets that
// next. Where the kernel has no large pages it is refused, and the small ones serve as well.
void wantLargePages(unsigned char* data, size_t bytes) {
#ifdef MADV_HUGEPAGE
    ::madvise(data, bytes, MADV_HUGEPAGE);
#else
    (void)data;
    (void)bytes;
#endif
}

// The address sanitizer knows by itself what belongs to a block of the heap, but not of a mapping.
void watchOutside(const unsigned char* block, size_t mapped, const unsigned char* data, size_t bytes) {
#ifdef OSTREL_ADDRESSES_ARE_WATCHED
    ASAN_POISON_MEMORY_REGION(block, mapped);
    ASAN_UNPOISON_MEMORY_REGION(data, bytes);
#else
    (void)block;
    (void)mapped;
    (void)data;
    (void)bytes;
#endif
}

} // namespace

const size_t FrameMemory::LARGE;

FrameMemory::FrameMemory(size_t bytes) : data_(0) {
    if (bytes > SIZE_MAX - 2 * LARGE_PAGE)
        throw std::bad_alloc();
    if (bytes < LARGE) {
        block_.reset(new unsigned char[bytes + ALIGNMENT]);
        data_ = aligned(block_.get(), ALIGNMENT);
        return;
    }
    // A large page is one only where all of it belongs to the block. What is not touched takes no memory.
    const size_t room = (bytes + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
    const size_t mapped = room + LARGE_PAGE;
    block_ = std::unique_ptr<unsigned char, GiveBack>(map(mapped), GiveBack(mapped));
    data_ = aligned(block_.get(), LARGE_PAGE);
    wantLargePages(data_, room);
    watchOutside(block_.get(), mapped, data_, bytes);
}

void FrameMemory::GiveBack::operator()(unsigned char* block) const {
    if (mapped == 0) {
        delete[] block;
        return;
    }
    watchOutside(block, mapped, block, mapped); // whoever is mapped here next starts afresh
    ::munmap(block, mapped);
}

} // namespace ostrel
