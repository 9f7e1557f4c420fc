// Several descriptors as one, which is readable while any of them is.
#ifndef OSTREL_PLATFORM_CAMERAS_DESCRIPTOR_SET_H
#define OSTREL_PLATFORM_CAMERAS_DESCRIPTOR_SET_H

#include <cerrno>
#include <sys/epoll.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

// Bound to one thread at a time. A descriptor that is closed leaves the set by itself.
class DescriptorSet {
public:
    DescriptorSet() : descriptor_(::epoll_create1(EPOLL_CLOEXEC)) {}
    ~DescriptorSet() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    DescriptorSet(const DescriptorSet&) = delete;
    DescriptorSet& operator=(const DescriptorSet&) = delete;

    // False when it cannot be watched, as -1 cannot, or when the system has no room. Once is enough.
    bool add(int descriptor) {
        epoll_event event = {};
        event.events = EPOLLIN;
        return ::epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &event) == 0 || errno == EEXIST;
    }

    // -1 when the system had none left.
    int descriptor() const { return descriptor_; }

private:
    const int descriptor_;
};

} // namespace cameras
} // namespace ostrel

#endif
