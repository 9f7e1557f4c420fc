// One who waits for the frames of a slot.
#ifndef OSTREL_PLATFORM_QTKIT_SLOT_READER_H
#define OSTREL_PLATFORM_QTKIT_SLOT_READER_H

#include "base/wake_descriptor.h"
#include "platform/QTKit/frame_slot.h"
#include "platform/QTKit/slot_frame.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ostrel {

// Bound to one thread.
class SlotReader {
public:
    enum class Found { Frame, Nothing, End };

    struct Taken {
        std::shared_ptr<SlotFrame> frame;
        bool shared = false; // there are other readers
        std::string why;     // no frame will come
    };

    // The newest frame that is there already has not been had.
    explicit SlotReader(std::shared_ptr<FrameSlot> slot);
    ~SlotReader();
    SlotReader(const SlotReader&) = delete;
    SlotReader& operator=(const SlotReader&) = delete;

    // Waits until that time of CLOCK_MONOTONIC in nanoseconds, for ever when it is negative. A frame counts
    // as had from now on.
    Found take(int64_t until, Taken& taken);
    // Of the frame that was taken: it was no use, and is there as before; how many frames were passed over
    // before it; it was of use, and is not passed over.
    void putBack(const SlotFrame& frame);
    uint64_t passedOver(const SlotFrame& frame) const { return frame.serial - got_ - 1; }
    void got(const SlotFrame& frame) { got_ = frame.serial; }
    // Readable while take() would return at once. -1 when there is none to be had.
    int descriptor();

private:
    friend class FrameSlot;
    bool hasNews() const { return slot_->newest_ && slot_->serial_ != had_; }
    void updateDescriptor();

    const std::shared_ptr<FrameSlot> slot_;
    uint64_t got_ = 0; // serial number
    // Under the slot's lock:
    uint64_t had_ = 0;                     // serial number
    std::unique_ptr<WakeDescriptor> wake_; // once it was asked for
    bool readable_ = false;
};

} // namespace ostrel

#endif
