#include "platform/QTKit/slot_reader.h"

#include <algorithm>
#include <chrono>

namespace ostrel {

SlotReader::SlotReader(std::shared_ptr<FrameSlot> slot) : slot_(std::move(slot)) {
    FrameSlot::Lock lock(slot_->mutex_);
    slot_->readers_.push_back(this);
    had_ = got_ = slot_->serial_ - (slot_->newest_ ? 1 : 0);
}

SlotReader::~SlotReader() {
    FrameSlot::Lock lock(slot_->mutex_);
    slot_->readers_.erase(std::find(slot_->readers_.begin(), slot_->readers_.end(), this));
}

SlotReader::Found SlotReader::take(int64_t until, Taken& taken) {
    FrameSlot::Lock lock(slot_->mutex_);
    const auto ready = [this] { return slot_->over_ || hasNews(); };
    if (until < 0) {
        slot_->changed_.wait(lock, ready);
    } else {
        const std::chrono::steady_clock::time_point time{std::chrono::nanoseconds(until)};
        if (!slot_->changed_.wait_until(lock, time, ready))
            return Found::Nothing;
    }
    if (!hasNews()) {
        taken.why = slot_->why_;
        return Found::End;
    }
    taken.frame = slot_->newest_;
    taken.shared = slot_->readers_.size() > 1;
    had_ = slot_->serial_;
    updateDescriptor();
    return Found::Frame;
}

void SlotReader::putBack(const SlotFrame& frame) {
    FrameSlot::Lock lock(slot_->mutex_);
    had_ = frame.serial - 1;
    updateDescriptor();
}

int SlotReader::descriptor() {
    FrameSlot::Lock lock(slot_->mutex_);
    if (!wake_) {
        auto fresh = std::make_unique<WakeDescriptor>();
        if (!fresh->valid())
            return -1;
        wake_ = std::move(fresh);
        updateDescriptor();
    }
    return wake_->descriptor();
}

void SlotReader::updateDescriptor() {
    const bool readable = slot_->over_ || hasNews();
    if (!wake_ || readable == readable_)
        return;
    readable_ = readable;
    if (readable)
        wake_->set();
    else
        wake_->clear();
}

} // namespace ostrel
