#include "apps/camera/stop_request.h"

#include "base/wake_descriptor.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <poll.h>

namespace ostrel::apps::cli {

namespace {

const int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};
using std::chrono::milliseconds;
const milliseconds LONGEST_POLL(1000000000); // what poll() counts has to fit an int

std::atomic<int> noted{0};
std::atomic<const WakeDescriptor*> wake{nullptr};
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<WakeDescriptor*>::is_always_lock_free,
              "a signal handler uses them");

void note(int signal) {
    const int before = errno;
    noted = signal;
    if (const WakeDescriptor* const waiting = wake)
        waiting->set();
    errno = before;
}

} // namespace

StopRequest::StopRequest() {
    noted = 0;
    // One for all requests, and never closed: a handler may still be running when its request ends.
    static const WakeDescriptor* const kept = new WakeDescriptor;
    kept->clear();
    wake = kept;
    for (const int signal : SIGNALS) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler == SIG_IGN)
            continue;
        struct sigaction action = {};
        action.sa_handler = note;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

StopRequest::~StopRequest() {
    for (const int signal : SIGNALS) {
        struct sigaction current = {};
        sigaction(signal, nullptr, &current);
        if (current.sa_handler == note)
            std::signal(signal, SIG_DFL);
    }
    wake = nullptr;
}

int StopRequest::signal() const {
    return noted;
}

bool StopRequest::wait(int descriptor, std::chrono::steady_clock::time_point until) const {
    const milliseconds left = std::chrono::ceil<milliseconds>(until - std::chrono::steady_clock::now());
    const milliseconds polled = std::clamp(left, milliseconds(0), LONGEST_POLL);
    pollfd ready[] = {{descriptor, POLLIN, 0}, {wake.load()->descriptor(), POLLIN, 0}};
    return poll(ready, std::size(ready), static_cast<int>(polled.count())) != 0 || left > polled;
}

} // namespace ostrel::apps::cli
