// Programs that are started do not inherit a kernel queue, so it needs no flag that says so.
#include "platform/cameras/descriptor_set.h"

#include <sys/event.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

DescriptorSet::DescriptorSet() : descriptor_(::kqueue()) {}

DescriptorSet::~DescriptorSet() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

// Nobody takes the events out of the queue: while one holds, the queue itself is readable.
bool DescriptorSet::add(int descriptor) {
    struct kevent event = {};
    event.ident = static_cast<uintptr_t>(descriptor);
    event.filter = EVFILT_READ;
    event.flags = EV_ADD;
    return ::kevent(descriptor_, &event, 1, nullptr, 0, nullptr) == 0;
}

} // namespace cameras
} // namespace ostrel
