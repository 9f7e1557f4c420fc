#include "platform/cameras/figures.h"

#include "platform/cameras/messages.h"

#include <new>

namespace ostrel {
namespace cameras {

void Figures::countDelivered() {
    delivered_.fetch_add(1, std::memory_order_relaxed);
    totals_->delivered.fetch_add(1, std::memory_order_relaxed);
}

void Figures::countTaken() {
    taken_.fetch_add(1, std::memory_order_relaxed);
    totals_->taken.fetch_add(1, std::memory_order_relaxed);
}

void Figures::setGranted(const Mode& mode) {
    std::lock_guard<std::mutex> lock(mutex_);
    granted_ = mode;
}

Mode Figures::granted() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return granted_;
}

void Figures::setWay(std::string by) {
    std::lock_guard<std::mutex> lock(mutex_);
    by_ = std::move(by);
}

void Figures::setEnded(const Error& why) noexcept {
    std::lock_guard<std::mutex> lock(mutex_);
    ended_.code = why.code;
    try {
        ended_.text = why.text;
    } catch (const std::bad_alloc&) {
        ended_.text.clear(); // the number is enough to make words from
    }
}

void Figures::setStalled(std::string why) {
    std::lock_guard<std::mutex> lock(mutex_);
    stalled_ = std::move(why);
}

void Figures::setShared(std::string why) {
    std::lock_guard<std::mutex> lock(mutex_);
    shared_ = std::move(why);
}

StreamStatistics Figures::snapshot() const {
    StreamStatistics result;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        result.granted = granted_;
        result.by = by_;
        result.stalled = stalled_;
        result.shared = shared_;
        if (ended_)
            result.ended = ended_.text.empty() ? reason(ended_.code) : ended_.text;
    }
    result.delivered = delivered_.load(std::memory_order_relaxed);
    result.taken = taken_.load(std::memory_order_relaxed);
    result.skipped = skipped_.load(std::memory_order_relaxed);
    result.lost = lost_.load(std::memory_order_relaxed);
    result.restarts = restarts_.load(std::memory_order_relaxed);
    for (size_t i = 0; i < dropped_.size(); ++i)
        if (const uint64_t dropped = dropped_[i].load(std::memory_order_relaxed))
            result.dropped[i < FAULTS ? pixels::reason(static_cast<pixels::Fault>(i))
                                      : reason(static_cast<Drop>(i - FAULTS))] = dropped;
    return result;
}

} // namespace cameras
} // namespace ostrel
