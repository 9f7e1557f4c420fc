// Looking again once a second, where nobody tells.
#ifndef OSTREL_PLATFORM_CAMERAS_TICKER_H
#define OSTREL_PLATFORM_CAMERAS_TICKER_H

namespace ostrel {
namespace cameras {

// Bound to one thread at a time. A timer of the kernel's: ticker_timerfd.cpp, on macOS ticker_kqueue.cpp.
class Ticker {
public:
    Ticker(); // off
    ~Ticker();
    Ticker(const Ticker&) = delete;
    Ticker& operator=(const Ticker&) = delete;

    // Readable once a second is over. -1 when the system had none left.
    int descriptor() const { return descriptor_; }
    // Whether a second was over; the next one begins to count where it ended.
    bool clear();
    void switchOn(bool on);

private:
    const int descriptor_;
    bool on_ = false;
};

} // namespace cameras
} // namespace ostrel

#endif
