#include "platform/cameras/virtual/controls.h"

namespace ostrel {
namespace cameras {

namespace {

// One cache line, as real drivers pad.
const int PADDING_BYTES = 64;

} // namespace

void StreamFigures::countDelivered(uint64_t passedOver) {
    skipped_.fetch_add(passedOver, std::memory_order_relaxed);
    delivered_.fetch_add(1, std::memory_order_relaxed);
    controls_->delivered.fetch_add(1, std::memory_order_relaxed);
}

void StreamFigures::countTaken() {
    taken_.fetch_add(1, std::memory_order_relaxed);
    controls_->taken.fetch_add(1, std::memory_order_relaxed);
}

void StreamFigures::setGranted(const std::string& format, int width, int height, double rate) {
    std::lock_guard<std::mutex> lock(mutex_);
    rest_.grantedFormat = format;
    rest_.grantedWidth = width;
    rest_.grantedHeight = height;
    rest_.grantedRate = rate;
}

void StreamFigures::setEnded(const std::string& why) {
    std::lock_guard<std::mutex> lock(mutex_);
    rest_.ended = why;
}

StreamStatistics StreamFigures::snapshot() const {
    std::unique_lock<std::mutex> lock(mutex_);
    StreamStatistics result = rest_;
    lock.unlock();
    result.delivered = delivered_.load(std::memory_order_relaxed);
    result.taken = taken_.load(std::memory_order_relaxed);
    result.skipped = skipped_.load(std::memory_order_relaxed);
    return result;
}

VirtualFrame::VirtualFrame(std::shared_ptr<StreamFigures> figures)
    : figures_(std::move(figures)),
      padding_(figures_->controls().told(VIRTUAL_CAMERA_FAULT_PADDED_ROWS) ? PADDING_BYTES : 0) {}

bool VirtualFrame::convert(uint8_t* bgra, int width, int height, int stride) {
    if (!draw(bgra, width, height, stride))
        return false;
    figures_->countTaken();
    return true;
}

} // namespace cameras
} // namespace ostrel
