// For systems without eventfd.
#include "base/wake_descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace ostrel {

namespace {

// A program that is started at this very moment may inherit it: there is no call that makes such a pipe in
// one step everywhere.
bool setUp(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && ::fcntl(descriptor, F_SETFL, flags | O_NONBLOCK) == 0 &&
           ::fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

} // namespace

WakeDescriptor::WakeDescriptor() : reader_(-1), writer_(-1) {
    int ends[2] = {-1, -1};
    if (::pipe(ends) != 0)
        return;
    if (!setUp(ends[0]) || !setUp(ends[1])) {
        ::close(ends[0]);
        ::close(ends[1]);
        return;
    }
    reader_ = ends[0];
    writer_ = ends[1];
}

WakeDescriptor::~WakeDescriptor() {
    if (!valid())
        return;
    ::close(reader_);
    ::close(writer_);
}

// A pipe that is full is readable already.
void WakeDescriptor::set() const {
    const char byte = 0;
    const ssize_t written = valid() ? ::write(writer_, &byte, 1) : 0;
    (void)written;
}

bool WakeDescriptor::clear() const {
    char bytes[256];
    bool any = false;
    ssize_t count = 0;
    do {
        count = valid() ? ::read(reader_, bytes, sizeof bytes) : 0;
        any = any || count > 0;
    } while (count == static_cast<ssize_t>(sizeof bytes));
    return any;
}

} // namespace ostrel
