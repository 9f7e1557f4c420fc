#include "platform/cameras/delivery_thread.h"

#include "base/monotonic_clock.h"

#include <algorithm>
#include <climits>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <system_error>

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

bool isReadableWithin(int descriptor, int64_t nanoseconds) {
    pollfd one = {descriptor, POLLIN, 0};
#if defined(__APPLE__) // no ppoll() there
    const int64_t milliseconds =
        (nanoseconds + NANOSECONDS_PER_MILLISECOND - 1) / NANOSECONDS_PER_MILLISECOND;
    return ::poll(&one, 1, static_cast<int>(std::min<int64_t>(milliseconds, INT_MAX))) > 0;
#else
    timespec wait = {};
    wait.tv_sec = static_cast<time_t>(std::min<int64_t>(nanoseconds / NANOSECONDS_PER_SECOND, INT_MAX));
    wait.tv_nsec = static_cast<long>(nanoseconds % NANOSECONDS_PER_SECOND);
    return ::ppoll(&one, 1, &wait, nullptr) > 0;
#endif
}

// At most 15 characters, else it fails harmlessly.
void setThreadName(const char* name) {
#if defined(__APPLE__)
    ::pthread_setname_np(name);
#else
    ::pthread_setname_np(::pthread_self(), name);
#endif
}

} // namespace

void StopSignal::raise() {
    raised_.store(true, std::memory_order_release);
    wake();
}

void StopSignal::clearWake() const {
    wake_.clear();
    if (raised()) // meanwhile: nobody will wake again
        wake();
}

bool StopSignal::sleepUntil(int64_t time) const {
    while (!raised()) {
        const int64_t left = time - monotonicNanoseconds();
        if (left <= 0)
            break;
        if (isReadableWithin(descriptor(), left))
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
            setThreadName(name);
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
