#include "apps/camera/stop_request.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

namespace ostrel::apps::cli {

namespace {

const int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> noted{0};
std::atomic<int> wake{-1}; // an eventfd
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler uses them");

void note(int signal) {
    const int before = errno;
    const uint64_t one = 1;
    noted = signal;
    (void)!write(wake, &one, sizeof one);
    errno = before;
}

} // namespace

StopRequest::StopRequest() {
    noted = 0;
    wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
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
    const int descriptor = wake.exchange(-1);
    if (descriptor >= 0)
        close(descriptor);
}

int StopRequest::signal() const {
    return noted;
}

int StopRequest::descriptor() const {
    return wake;
}

} // namespace ostrel::apps::cli
