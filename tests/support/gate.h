// Waiting: a door that holds threads back until a test opens it, and for what comes true by itself.
#ifndef OSTREL_TESTS_SUPPORT_GATE_H
#define OSTREL_TESTS_SUPPORT_GATE_H

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace ostrel::support {

// Only a hang is ever waited out for so long.
constexpr std::chrono::seconds HANG{60};

// Asks again and again until it holds; false when it never does.
template <typename Condition>
bool comesTrue(Condition condition) {
    const auto limit = std::chrono::steady_clock::now() + HANG;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// Thread-safe. Open at first.
class Gate {
public:
    void shut() { set(false); }
    void open() { set(true); }

    // Called by the thread that is to be held back.
    void pass() {
        std::unique_lock<std::mutex> lock(mutex_);
        ++arrived_;
        changed_.notify_all();
        if (!changed_.wait_for(lock, HANG, [this] { return open_; }))
            hung("a gate was never opened");
    }

    // Waits until so many threads have come to the gate since it was made.
    void awaitArrivals(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!changed_.wait_for(lock, HANG, [&] { return arrived_ >= count; }))
            hung("nobody came to a gate");
    }

private:
    void set(bool open) {
        std::lock_guard<std::mutex> lock(mutex_);
        open_ = open;
        changed_.notify_all();
    }
    [[noreturn]] static void hung(const char* what) {
        std::printf("%s\n", what);
        std::fflush(stdout);
        std::abort();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool open_ = true;
    int arrived_ = 0;
};

} // namespace ostrel::support

#endif
