#include "platform/cameras/v4l2/kernel_calls.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

template <typename Call>
int retried(Call call) {
    int result;
    do
        result = call();
    while (result == -1 && errno == EINTR);
    return result;
}

} // namespace

int KernelCalls::open(const char* path, int flags) {
    return retried([&] { return doOpen(path, flags); });
}

int KernelCalls::close(int descriptor) {
    // Linux has let go of the descriptor when close() is broken off: a second one could hit another thread's.
    const int result = doClose(descriptor);
    return result == -1 && errno == EINTR ? 0 : result;
}

int KernelCalls::ioctl(int descriptor, unsigned long request, void* argument) {
    return retried([&] { return doIoctl(descriptor, request, argument); });
}

void* KernelCalls::mmap(size_t length, int descriptor, long offset) {
    void* result;
    do
        result = doMmap(length, descriptor, offset);
    while (result == MAP_FAILED && errno == EINTR);
    return result;
}

int KernelCalls::munmap(void* address, size_t length) {
    return retried([&] { return doMunmap(address, length); });
}

int KernelCalls::poll(pollfd* descriptors, unsigned long count, int milliseconds) {
    return retried([&] { return doPoll(descriptors, count, milliseconds); });
}

int KernelCalls::openEvents(int descriptor) {
    const int events = ::epoll_create1(EPOLL_CLOEXEC);
    epoll_event told = {};
    told.events = eventsMark();
    if (events >= 0 && ::epoll_ctl(events, EPOLL_CTL_ADD, descriptor, &told) != 0) {
        const int error = errno;
        ::close(events);
        errno = error;
        return -1;
    }
    return events;
}

void KernelCalls::closeEvents(int events) {
    ::close(events);
}

int KernelCalls::doOpen(const char* path, int flags) {
    return ::open(path, flags);
}

int KernelCalls::doClose(int descriptor) {
    return ::close(descriptor);
}

int KernelCalls::doIoctl(int descriptor, unsigned long request, void* argument) {
    return ::ioctl(descriptor, request, argument);
}

void* KernelCalls::doMmap(size_t length, int descriptor, long offset) {
    return ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, offset);
}

int KernelCalls::doMunmap(void* address, size_t length) {
    return ::munmap(address, length);
}

int KernelCalls::doPoll(pollfd* descriptors, unsigned long count, int milliseconds) {
    return ::poll(descriptors, count, milliseconds);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
