// The sanitizers' operator new ends the process when memory cannot be had, where every other one throws
// std::bad_alloc. The library promises that exception, so requests that no machine can meet are answered with
// it here; all others go to the sanitizer, which then still sees each block and how it is freed. Weak, so
// that a test program may bring an operator of its own.
#include <atomic>
#include <cstddef>
#include <dlfcn.h>
#include <new>

namespace {

using Operator = void* (*)(std::size_t);
const std::size_t NO_MACHINE_HAS = std::size_t(1) << 40;

void* allocate(std::atomic<Operator>& next, const char* name, std::size_t size) {
    if (size > NO_MACHINE_HAS)
        throw std::bad_alloc();
    Operator sanitizers = next.load(std::memory_order_relaxed);
    if (!sanitizers) {
        sanitizers = reinterpret_cast<Operator>(dlsym(RTLD_NEXT, name));
        next.store(sanitizers, std::memory_order_relaxed);
    }
    return sanitizers(size);
}

std::atomic<Operator> g_nextNew;
std::atomic<Operator> g_nextNewArray;

} // namespace

__attribute__((visibility("default"), weak)) void* operator new(std::size_t size) {
    return allocate(g_nextNew, "_Znwm", size);
}

__attribute__((visibility("default"), weak)) void* operator new[](std::size_t size) {
    return allocate(g_nextNewArray, "_Znam", size);
}
