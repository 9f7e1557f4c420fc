#include "platform/cameras/descriptor_set.h"

#include <cerrno>
#include <sys/epoll.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

DescriptorSet::DescriptorSet() : descriptor_(::epoll_create1(EPOLL_CLOEXEC)) {}

DescriptorSet::~DescriptorSet() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool DescriptorSet::add(int descriptor) {
    epoll_event event = {};
    event.events = EPOLLIN;
    return ::epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &event) == 0 || errno == EEXIST;
}

} // namespace cameras
} // namespace ostrel
