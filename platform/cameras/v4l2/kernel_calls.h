// Every call that a camera makes into the kernel, so that a test can stand in for it.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_KERNEL_CALLS_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_KERNEL_CALLS_H

#include <cstddef>
#include <cstdint>
#include <poll.h>
#include <sys/epoll.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Answers as the kernel does: -1 (MAP_FAILED) and errno. A call that a signal broke off is made again, so no
// caller sees EINTR. Thread-safe.
class KernelCalls {
public:
    virtual ~KernelCalls() = default;

    int open(const char* path, int flags);
    int close(int descriptor);
    int ioctl(int descriptor, unsigned long request, void* argument);
    void* mmap(size_t length, int descriptor, long offset); // shared, for reading and writing
    int munmap(void* address, size_t length);
    int poll(pollfd* descriptors, unsigned long count, int milliseconds);
    // A descriptor that is readable while the node's has events to tell, and once its device has left: a
    // client can wait for that beside anything else, and the node's own would begin to stream when it is
    // waited for to become readable.
    int openEvents(int descriptor);
    void closeEvents(int events);

protected:
    virtual int doOpen(const char* path, int flags);
    virtual int doClose(int descriptor);
    virtual int doIoctl(int descriptor, unsigned long request, void* argument);
    virtual void* doMmap(size_t length, int descriptor, long offset);
    virtual int doMunmap(void* address, size_t length);
    virtual int doPoll(pollfd* descriptors, unsigned long count, int milliseconds);
    virtual uint32_t eventsMark() { return EPOLLPRI; } // what tells of events
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
