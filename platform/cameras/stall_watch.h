// When a stream that sends nothing is to be started again.
#ifndef OSTREL_PLATFORM_CAMERAS_STALL_WATCH_H
#define OSTREL_PLATFORM_CAMERAS_STALL_WATCH_H

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace ostrel {
namespace cameras {

// Bound to one thread. Times are of CLOCK_MONOTONIC in nanoseconds.
class StallWatch {
public:
    // A webcam that boots its firmware takes this long for the first frame.
    inline static std::atomic<int64_t> leastPause{2000000000}; // changed by tests alone
    // A camera that three starts do not revive will not be revived by a fourth; it may still come back by
    // itself.
    static constexpr int MOST_RESTARTS = 3;

    void begin(int64_t now) { since_ = now; }
    // Returns whether the stream had stalled before.
    bool frameCame(int64_t now) {
        const bool before = stalled_;
        since_ = now;
        restarts_ = 0;
        stalled_ = false;
        return before;
    }
    // Before this there is no need to ask the hardware about its pauses.
    bool isSilent(int64_t now) const { return now - since_ >= leastPause; }
    // Whether to start the stream again. longestPause: what the hardware needs, 0 when it owes no frame. Each
    // restart is given twice the time of the one before.
    bool isDue(int64_t now, int64_t longestPause) {
        if (longestPause == 0) {
            since_ = now;
            return false;
        }
        const int64_t pause = std::max(leastPause.load(), longestPause);
        if (now - since_ < pause << restarts_)
            return false;
        stalled_ = true;
        if (restarts_ == MOST_RESTARTS)
            return false;
        ++restarts_;
        return true;
    }
    void restarted(int64_t now) { since_ = now; }
    // After a start that was refused.
    bool mayTryAgain() {
        if (restarts_ == MOST_RESTARTS)
            return false;
        ++restarts_;
        return true;
    }
    bool hasGivenUp() const { return stalled_ && restarts_ == MOST_RESTARTS; }
    // How long to wait before a start that was refused is tried again.
    int64_t retryPause() const { return leastPause.load() / 4 << restarts_; }

private:
    int64_t since_ = 0; // when the last frame came, or the stream was started
    int restarts_ = 0;  // since the last frame
    bool stalled_ = false;
};

} // namespace cameras
} // namespace ostrel

#endif
