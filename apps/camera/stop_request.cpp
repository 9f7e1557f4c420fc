#include "apps/camera/stop_request.h"

#include <atomic>
#include <csignal>

namespace ostrel::apps::cli {

namespace {

const int SIGNALS[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> noted{0};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

void note(int signal) {
    noted = signal;
}

} // namespace

StopRequest::StopRequest() {
    noted = 0;
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
}

int StopRequest::signal() const {
    return noted;
}

} // namespace ostrel::apps::cli
