// The scripted kernel's system calls, up to the driver behind them.
#include "support/v4l2/scripted_kernel.h"

#include <algorithm>
#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>

namespace ostrel::support {

namespace {

int fail(int number) {
    errno = number;
    return -1;
}

void* failMapping(int number) {
    errno = number;
    return MAP_FAILED;
}

} // namespace

ScriptedKernel::Node ScriptedKernel::nodeOf(int descriptor) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = open_.find(descriptor);
    return found == open_.end() ? Node() : found->second;
}

ScriptedKernel::Node ScriptedKernel::nodeAt(const std::string& path) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = plugged_.find(path);
    return {path, found == plugged_.end() ? nullptr : found->second};
}

bool ScriptedKernel::isOpen(int descriptor) {
    return nodeOf(descriptor).driver != nullptr;
}

// The call's turn, where a node has one call at a time.
std::unique_lock<std::mutex> ScriptedKernel::turn(const Node& node) {
    return node.driver && node.driver->oneCallAtATime() ? std::unique_lock<std::mutex>(node.driver->serial)
                                                        : std::unique_lock<std::mutex>();
}

int ScriptedKernel::doOpen(const char* path, int) {
    const Node node = nodeAt(path);
    const auto mine = turn(node);
    if (const int error = script_.enter(OPEN, path))
        return fail(error);
    const Node now = nodeAt(path); // the device may have left meanwhile, or another come
    if (!now.driver)
        return fail(ENOENT);
    std::lock_guard<std::mutex> lock(mutex_);
    const int descriptor = now.driver->open();
    open_[descriptor] = now;
    journal_.calls.push_back("open");
    return descriptor;
}

int ScriptedKernel::doClose(int descriptor) {
    const Node node = nodeOf(descriptor);
    const auto mine = turn(node);
    const int error = script_.enter(CLOSE, node.path); // the descriptor is gone all the same
    std::lock_guard<std::mutex> lock(mutex_);
    if (open_.erase(descriptor) == 0) {
        journal_.misuse.push_back("close of a descriptor that is not open");
        return fail(EBADF);
    }
    node.driver->close(descriptor);
    journal_.calls.push_back("close");
    return error ? fail(error) : 0;
}

int ScriptedKernel::doIoctl(int descriptor, unsigned long request, void* argument) {
    const Node node = nodeOf(descriptor);
    const auto mine = turn(node);
    const int scripted = script_.enter(request, node.path);
    std::lock_guard<std::mutex> lock(mutex_);
    if (!node.driver) {
        journal_.misuse.push_back("ioctl on a descriptor that is not open");
        return fail(EBADF);
    }
    if (scripted) {
        if (request == VIDIOC_STREAMOFF || request == VIDIOC_REQBUFS)
            node.driver->excuse();
        return fail(scripted);
    }
    const int error = node.driver->ioctl(descriptor, request, argument);
    return error ? fail(error) : 0;
}

void* ScriptedKernel::doMmap(size_t length, int descriptor, long offset) {
    const Node node = nodeOf(descriptor);
    const auto mine = turn(node);
    if (const int error = script_.enter(MMAP, node.path))
        return failMapping(error);
    std::lock_guard<std::mutex> lock(mutex_);
    void* const address = node.driver ? node.driver->map(length, offset) : nullptr;
    if (!address)
        return failMapping(EINVAL);
    mappings_[address] = {node.path, node.driver, length, offset};
    return address;
}

// Not one of the node's calls: the kernel's memory management gives the pages back without asking the driver.
int ScriptedKernel::doMunmap(void* address, size_t length) {
    Mapping mapping = {};
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto found = mappings_.find(address);
        if (found != mappings_.end())
            mapping = found->second;
    }
    if (const int error = script_.enter(MUNMAP, mapping.path))
        return fail(error);
    std::lock_guard<std::mutex> lock(mutex_);
    if (!mapping.driver || mapping.length != length) {
        journal_.misuse.push_back("munmap of something else");
        return fail(EINVAL);
    }
    mapping.driver->unmapped(mapping.offset);
    mappings_.erase(address);
    journal_.calls.push_back("munmap");
    return ::munmap(address, length);
}

int ScriptedKernel::doPoll(pollfd* descriptors, unsigned long count, int milliseconds) {
    Node first;
    for (unsigned long i = 0; i < count && !first.driver; ++i)
        first = nodeOf(descriptors[i].fd);
    if (const int error = script_.enter(POLL, first.path))
        return fail(error);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (unsigned long i = 0; i < count; ++i) {
            const auto found = open_.find(descriptors[i].fd);
            if (found != open_.end() && !found->second.driver->hasFrames()) {
                found->second.driver->idle = true;
                idle_.notify_all();
            }
        }
    }
    const int64_t until = monotonicNow() + static_cast<int64_t>(milliseconds) * 1000000;
    int result = ::poll(descriptors, count, milliseconds);
    // A timer can run out for a frame that no buffer was there for: nothing to tell yet.
    while (result > 0 && (result = tell(descriptors, count)) == 0) {
        const int64_t left = std::max<int64_t>(until - monotonicNow(), 0) / 1000000;
        result = ::poll(descriptors, count, milliseconds < 0 ? -1 : static_cast<int>(left));
    }
    return result;
}

// How many of the descriptors have something to tell, and what.
int ScriptedKernel::tell(pollfd* descriptors, unsigned long count) {
    std::lock_guard<std::mutex> lock(mutex_);
    int ready = 0;
    for (unsigned long i = 0; i < count; ++i) {
        const auto found = open_.find(descriptors[i].fd);
        if (found != open_.end())
            descriptors[i].revents = found->second.driver->events(descriptors[i].fd, descriptors[i].events);
        ready += descriptors[i].revents != 0;
    }
    return ready;
}

} // namespace ostrel::support
