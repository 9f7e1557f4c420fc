#include "platform/cameras/delivery_thread.h"

#include "base/monotonic_clock.h"

#include <algorithm>
#include <climits>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace ostrel {
namespace cameras {

namespace {

// Keeps every signal from the calling thread, and from threads that it makes meanwhile.
class SignalsHeld {
public:
    SignalsHeld() {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsHeld() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t before_;
};

} // namespace

StopSignal::StopSignal() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

StopSignal::~StopSignal() {
    if (descriptor_ >= 0)
        ::close(descriptor_);
}

void StopSignal::raise() {
    raised_.store(true, std::memory_order_release);
    wake();
}

void StopSignal::wake() const {
    ::eventfd_write(descriptor_, 1);
}

void StopSignal::clearWake() const {
    eventfd_t count = 0;
    ::eventfd_read(descriptor_, &count);
    if (raised()) // meanwhile: nobody will wake again
        wake();
}

bool StopSignal::sleepUntil(int64_t time) const {
    while (!raised()) {
        const int64_t left = time - monotonicNanoseconds();
        if (left <= 0)
            break;
        timespec wait = {};
        wait.tv_sec = static_cast<time_t>(std::min<int64_t>(left / NANOSECONDS_PER_SECOND, INT_MAX));
        wait.tv_nsec = static_cast<long>(left % NANOSECONDS_PER_SECOND);
        pollfd descriptor = {descriptor_, POLLIN, 0};
        if (::ppoll(&descriptor, 1, &wait, nullptr) > 0)
            break;
    }
    return raised();
}

bool DeliveryThread::start(const char* name, Body body) {
    stop();
    auto signal = std::make_shared<StopSignal>();
    if (!signal->valid())
        return false;
    // Signals are the client's affair: none is to be handled on a thread that it does not know of.
    const SignalsHeld held;
    signal_ = signal; // before the body runs: it may stop itself
    try {
        thread_ = std::thread([signal, name, body = std::move(body)] {
            ::pthread_setname_np(::pthread_self(), name); // at most 15 characters, else it fails harmlessly
            body(*signal);
        });
    } catch (const std::system_error&) {
        signal_.reset();
        return false;
    } catch (...) {
        signal_.reset();
        throw;
    }
    return true;
}

void DeliveryThread::stop() {
    if (!thread_.joinable())
        return;
    signal_->raise();
    if (isCurrent())
        thread_.detach();
    else
        thread_.join();
    signal_.reset();
}

} // namespace cameras
} // namespace ostrel
