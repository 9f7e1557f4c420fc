// The fake kernel's system calls, up to the driver behind them.
#include "unit/v4l2/fake_kernel.h"

#include <algorithm>
#include <cerrno>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

namespace ostrel {
namespace tests {

namespace {

int fail(int number) {
    errno = number;
    return -1;
}

} // namespace

bool FakeKernel::failing(unsigned long call) {
    ++calls_[call];
    auto& script = failures_[call];
    if (script.empty())
        return false;
    if (script.front().after > 0) {
        --script.front().after;
        return false;
    }
    errno = script.front().number;
    if (--script.front().times == 0)
        script.pop_front();
    return true;
}

void FakeKernel::wake(Camera& camera) {
    for (const int descriptor : camera.descriptors)
        ::eventfd_write(descriptor, 1);
}

// Nothing is ready any more: the descriptors become unreadable, so that poll() waits.
void FakeKernel::settle(Camera& camera) {
    if (!camera.done.empty() || camera.gone || camera.events)
        return;
    eventfd_t value;
    for (const int descriptor : camera.descriptors)
        ::eventfd_read(descriptor, &value);
}

int FakeKernel::doOpen(const char* path, int) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (failing(kOpen))
        return -1;
    const auto found = cameras_.find(path);
    if (found == cameras_.end())
        return fail(ENOENT);
    const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    open_[descriptor] = found->second.get();
    found->second->descriptors.push_back(descriptor);
    note("open");
    return descriptor;
}

int FakeKernel::doClose(int descriptor) {
    std::lock_guard<std::mutex> lock(mutex_);
    const bool broken = failing(kClose); // the descriptor is gone all the same
    const int number = errno;
    const auto found = open_.find(descriptor);
    if (found == open_.end()) {
        misuse_.push_back("close of a descriptor that is not open");
        return fail(EBADF);
    }
    Camera& camera = *found->second;
    if (camera.owner == descriptor && !camera.excused)
        misuse_.push_back("closed with buffers");
    auto& all = camera.descriptors;
    all.erase(std::remove(all.begin(), all.end(), descriptor), all.end());
    open_.erase(found);
    ::close(descriptor);
    note("close");
    return broken ? fail(number) : 0;
}

void* FakeKernel::doMmap(size_t length, int descriptor, long offset) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (failing(kMmap))
        return MAP_FAILED;
    const auto found = open_.find(descriptor);
    const auto index = static_cast<unsigned>(offset / 4096);
    if (found == open_.end() || index >= found->second->buffers.size()) {
        errno = EINVAL;
        return MAP_FAILED;
    }
    // Memory of its own, so that reading it after munmap() crashes as it would with a driver's.
    void* address = ::mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    found->second->buffers[index].memory = static_cast<uint8_t*>(address);
    mappings_[address] = {found->second, index, length};
    return address;
}

int FakeKernel::doMunmap(void* address, size_t length) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (failing(kMunmap))
        return -1;
    const auto found = mappings_.find(address);
    if (found == mappings_.end() || found->second.length != length) {
        misuse_.push_back("munmap of something else");
        return fail(EINVAL);
    }
    Camera& camera = *found->second.camera;
    if (camera.streaming && !camera.excused)
        misuse_.push_back("unmapped while streaming");
    camera.buffers[found->second.index].memory = nullptr;
    mappings_.erase(found);
    note("munmap");
    return ::munmap(address, length);
}

int FakeKernel::doPoll(pollfd* descriptors, unsigned long count, int milliseconds) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (failing(kPoll))
            return -1;
        for (unsigned long i = 0; i < count; ++i) {
            const auto found = open_.find(descriptors[i].fd);
            if (found != open_.end() && found->second->done.empty()) {
                ++idlePolls_[found->second];
                idle_.notify_all();
            }
        }
    }
    const int result = ::poll(descriptors, count, milliseconds);
    if (result <= 0)
        return result;
    std::lock_guard<std::mutex> lock(mutex_);
    int ready = 0;
    for (unsigned long i = 0; i < count; ++i) {
        const auto found = open_.find(descriptors[i].fd);
        if (found != open_.end()) {
            Camera& camera = *found->second;
            short events = camera.events;
            if (camera.gone)
                events = POLLERR | POLLHUP;
            else if (!camera.streaming)
                events = static_cast<short>(events | POLLERR);
            if (!camera.done.empty())
                events = static_cast<short>(events | POLLIN);
            descriptors[i].revents = events;
        }
        ready += descriptors[i].revents != 0;
    }
    return ready;
}

int FakeKernel::doIoctl(int descriptor, unsigned long request, void* argument) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto found = open_.find(descriptor);
    if (failing(request)) {
        if (found != open_.end() && (request == VIDIOC_STREAMOFF || request == VIDIOC_REQBUFS))
            found->second->excused = true;
        return -1;
    }
    if (found == open_.end()) {
        misuse_.push_back("ioctl on a descriptor that is not open");
        return fail(EBADF);
    }
    Camera& camera = *found->second;
    if (camera.gone) {
        if (request == VIDIOC_REQBUFS || request == VIDIOC_STREAMOFF)
            camera.owner = -1;
        return fail(request == VIDIOC_DQBUF ? camera.device.unpluggedDequeue : ENODEV);
    }
    const int error = answer(camera, descriptor, request, argument);
    return error ? fail(error) : 0;
}

} // namespace tests
} // namespace ostrel
