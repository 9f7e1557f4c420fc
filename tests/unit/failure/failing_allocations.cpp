#include "unit/failure/failing_allocations.h"

#include "support/process_figures.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <sys/mman.h>
#include <thread>

namespace {

// In front of each block, as large as the strictest alignment so that the block keeps it.
struct alignas(std::max_align_t) Head {
    bool ours;
};

std::atomic<long> g_live{0};
thread_local int t_left = 0; // until the one that fails; 0: none is to
thread_local bool t_reached = false;
thread_local int t_paused = 0;

bool isOurs(const void* caller) {
    Dl_info module = {};
    if (!dladdr(caller, &module) || !module.dli_fname)
        return true;
    const char* slash = std::strrchr(module.dli_fname, '/');
    const char* name = slash ? slash + 1 : module.dli_fname;
    for (const char* framework : {"libQt", "libgnustep", "libobjc"})
        if (std::strncmp(name, framework, std::strlen(framework)) == 0)
            return false;
    return true;
}

bool isToFail() {
    if (t_paused || t_left == 0 || --t_left > 0)
        return false;
    t_reached = true;
    return true;
}

// Null when there is no memory or there is to be none.
void* allocate(std::size_t size, const void* caller) {
    const bool ours = isOurs(caller);
    if (ours && isToFail())
        return nullptr;
    // The sanitizers end the process at what no machine has, where malloc answers null.
    if (size > (std::size_t(1) << 40))
        return nullptr;
    void* const memory = std::malloc(sizeof(Head) + size);
    if (!memory)
        return nullptr;
    static_cast<Head*>(memory)->ours = ours;
    if (ours)
        ++g_live;
    return static_cast<Head*>(memory) + 1;
}

void* allocateOrThrow(std::size_t size, const void* caller) {
    if (void* const block = allocate(size, caller))
        return block;
    throw std::bad_alloc();
}

void release(void* block) {
    if (!block)
        return;
    Head* const head = static_cast<Head*>(block) - 1;
    if (head->ours)
        --g_live;
    std::free(head);
}

} // namespace

void* operator new(std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size, __builtin_return_address(0));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, __builtin_return_address(0));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, __builtin_return_address(0));
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    release(block);
}

// The system's own, found at the first call.
template <typename Function>
Function next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// Large frames are mappings of ours, each of them given back whole.
std::array<std::atomic<void*>, 4096> g_mappings;

bool exchange(void* expected, void* desired) {
    return std::any_of(g_mappings.begin(), g_mappings.end(), [=](std::atomic<void*>& place) {
        void* held = expected;
        return place.compare_exchange_strong(held, desired);
    });
}

// In place of the system's, for all libraries.
#pragma GCC visibility push(default)
extern "C" void* mmap(void* address, std::size_t length, int protection, int flags, int file,
                      off_t offset) noexcept {
    static const auto system = next<decltype(&mmap)>("mmap");
    const bool ours = (flags & MAP_ANONYMOUS) && isOurs(__builtin_return_address(0));
    if (ours && isToFail()) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    void* const block = system(address, length, protection, flags, file, offset);
    if (ours && block != MAP_FAILED && exchange(nullptr, block))
        ++g_live;
    return block;
}

extern "C" int munmap(void* block, std::size_t length) noexcept {
    static const auto system = next<decltype(&munmap)>("munmap");
    if (exchange(block, nullptr))
        --g_live;
    return system(block, length);
}
#pragma GCC visibility pop

namespace ostrel::tests {

Leftovers::Leftovers() : threads_(support::processFigures().threads), blocks_(g_live) {}

long Leftovers::blocks() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (support::processFigures().threads > threads_ && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    return g_live - blocks_;
}

FailingAllocation::FailingAllocation(int n) {
    t_reached = false;
    t_left = n;
}

FailingAllocation::~FailingAllocation() {
    t_left = 0;
}

void pauseFailing(bool paused) {
    t_paused += paused ? 1 : -1;
}

bool FailingAllocation::cameToIt() const {
    return t_reached;
}

} // namespace ostrel::tests
