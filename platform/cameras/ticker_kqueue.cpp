#include "platform/cameras/ticker.h"

#include <sys/event.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

namespace {

const uintptr_t TIMER = 1; // any name: there is one in a queue
const int PERIOD_MILLISECONDS = 1000;

} // namespace

Ticker::Ticker() : descriptor_(::kqueue()) {}

Ticker::~Ticker() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool Ticker::clear() {
    struct kevent told = {};
    const timespec atOnce = {0, 0};
    return ::kevent(descriptor_, nullptr, 0, &told, 1, &atOnce) > 0;
}

void Ticker::switchOn(bool on) {
    if (on == on_)
        return;
    struct kevent timer = {};
    timer.ident = TIMER;
    timer.filter = EVFILT_TIMER;
    timer.flags = on ? EV_ADD : EV_DELETE;
    timer.data = PERIOD_MILLISECONDS;
    ::kevent(descriptor_, &timer, 1, nullptr, 0, nullptr);
    on_ = on;
}

} // namespace cameras
} // namespace ostrel
