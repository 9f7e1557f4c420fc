// What a running camera does behind the frames that it hands out, counted.
#ifndef OSTREL_PLATFORM_CAMERAS_FIGURES_H
#define OSTREL_PLATFORM_CAMERAS_FIGURES_H

#include "platform/cameras/error.h"
#include "platform/cameras/format_choice.h"
#include "platform/cameras/pixels/picture.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {

// Why a frame was thrown away, beside the faults of its picture.
enum class Drop { Damaged, UnknownBuffer, NoMemory };

// What a camera was granted for a stream, in its own terms. What is not known stays empty or 0.
struct Mode {
    std::string format; // four characters, "MJPG"
    Size size;          // pixels
    Interval interval;
    bool hasPicture = true;
    double rate() const { return interval.rate(); } // frames a second
};

// The figures of one stream, as they were at one moment.
struct StreamStatistics {
    uint64_t delivered = 0;                  // frames handed to sinks
    uint64_t taken = 0;                      // pictures converted for somebody
    uint64_t skipped = 0;                    // passed over because a newer one was already there
    uint64_t lost = 0;                       // gaps in the driver's sequence numbers
    uint64_t restarts = 0;                   // of the stream, after it stalled
    std::map<std::string, uint64_t> dropped; // broken frames by reason
    Mode granted;
    std::string by;      // the way to the camera, "V4L2 (/dev/video0)"
    std::string ended;   // why the stream ended by itself; empty while it runs
    std::string stalled; // why no frames come at present, though the stream runs
    std::string shared;  // why a capture that joined did not get a better mode
};

// What was delivered and taken over all streams of a camera. Thread-safe; both wrap.
struct Totals {
    std::atomic<uint32_t> delivered{0};
    std::atomic<uint32_t> taken{0};
};

// Thread-safe. Counting neither allocates nor waits. Frames hold it: they may be taken after their stream has
// stopped.
class Figures {
public:
    explicit Figures(std::shared_ptr<Totals> totals) : totals_(std::move(totals)) {}

    void countDelivered();
    void countTaken();
    void countSkipped(uint64_t frames) { skipped_.fetch_add(frames, std::memory_order_relaxed); }
    void countLost(uint64_t frames) { lost_.fetch_add(frames, std::memory_order_relaxed); }
    void countRestart() { restarts_.fetch_add(1, std::memory_order_relaxed); }
    void drop(pixels::Fault fault) { count(static_cast<size_t>(fault)); }
    void drop(Drop reason) { count(FAULTS + static_cast<size_t>(reason)); }

    void setGranted(const Mode& mode);
    Mode granted() const;
    void setWay(std::string by);
    void setEnded(const Error& why) noexcept;
    void setStalled(std::string why);
    void setShared(std::string why);

    StreamStatistics snapshot() const;

private:
    static constexpr size_t FAULTS = static_cast<size_t>(pixels::Fault::Undecodable) + 1;
    static constexpr size_t DROPS = static_cast<size_t>(Drop::NoMemory) + 1;

    void count(size_t reason) { dropped_[reason].fetch_add(1, std::memory_order_relaxed); }

    const std::shared_ptr<Totals> totals_;
    std::atomic<uint64_t> delivered_{0}, taken_{0}, skipped_{0}, lost_{0}, restarts_{0};
    std::array<std::atomic<uint64_t>, FAULTS + DROPS> dropped_{};
    mutable std::mutex mutex_; // of the rest
    Mode granted_;
    std::string by_, stalled_, shared_;
    Error ended_;
};

} // namespace cameras
} // namespace ostrel

#endif
