#include "base/wake_descriptor.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace ostrel {

WakeDescriptor::WakeDescriptor() : reader_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), writer_(reader_) {}

WakeDescriptor::~WakeDescriptor() {
    if (reader_ >= 0)
        ::close(reader_);
}

void WakeDescriptor::set() const {
    ::eventfd_write(writer_, 1);
}

bool WakeDescriptor::clear() const {
    eventfd_t count = 0;
    return ::eventfd_read(reader_, &count) == 0;
}

} // namespace ostrel
