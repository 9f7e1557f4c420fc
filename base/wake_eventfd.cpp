#include "base/wake_descriptor.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace ostrel {

WakeDescriptor::WakeDescriptor() : m_reader(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_writer(m_reader) {}

WakeDescriptor::~WakeDescriptor() {
    if (m_reader >= 0)
        ::close(m_reader);
}

void WakeDescriptor::set() const {
    ::eventfd_write(m_writer, 1);
}

bool WakeDescriptor::clear() const {
    eventfd_t count = 0;
    return ::eventfd_read(m_reader, &count) == 0;
}

} // namespace ostrel
