#include "platform/cameras/ticker.h"

#include <cstdint>
#include <sys/timerfd.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {

Ticker::Ticker() : descriptor_(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)) {}

Ticker::~Ticker() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

bool Ticker::clear() {
    uint64_t times = 0;
    return ::read(descriptor_, &times, sizeof(times)) > 0;
}

void Ticker::switchOn(bool on) {
    if (on == on_)
        return;
    itimerspec time = {};
    time.it_value.tv_sec = time.it_interval.tv_sec = on;
    ::timerfd_settime(descriptor_, 0, &time, nullptr);
    on_ = on;
}

} // namespace cameras
} // namespace ostrel
