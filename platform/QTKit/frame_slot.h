// Where the deliveries to one delegate, and its newest frame, are found from outside the framework.
#ifndef OSTREL_PLATFORM_QTKIT_FRAME_SLOT_H
#define OSTREL_PLATFORM_QTKIT_FRAME_SLOT_H

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel {

class Delivery;
class SlotFrame;
class SlotReader;

// Thread-safe. A delegate has one for as long as somebody holds it; it is not retained, only told apart from
// others.
//
//   Waiting   nothing has ended       frames may come
//   Over      refused, or ended       the last frame can still be had; a new start makes it Waiting again
//   Shut      stopped for good        holds nothing any more
class FrameSlot {
public:
    // The delegate's own; made when there is none.
    static std::shared_ptr<FrameSlot> of(const void* delegate);
    // One that belongs to nobody: over, for this reason.
    static std::shared_ptr<FrameSlot> over(const std::string& why);

    // A start follows: what ended before is forgotten. From now on there is a slot until forget(), and it
    // holds the newest frame.
    static void expect(const void* delegate);
    // The start is over: without a delivery by now there will be none.
    static void startIsOver(const void* delegate);
    // No frame will come unless another start follows. The first reason stays. Null: nobody in particular.
    static void refuse(const void* delegate, const std::string& why);
    // Nothing is delivered to the delegate once this has returned, whatever its sessions still do: those that
    // run are stopped, those that are being started will not deliver.
    static void shut(const void* delegate);
    // Who waits is told that it was stopped, and the frame is let go of. The deliveries are left alone.
    static void close(const void* delegate);
    // The delegate is about to be freed: another object may get its address. Closes the slot.
    static void forget(const void* delegate);

    explicit FrameSlot(const void* delegate) : delegate_(delegate) {}
    ~FrameSlot();
    FrameSlot(const FrameSlot&) = delete;
    FrameSlot& operator=(const FrameSlot&) = delete;

    // False when the slot is shut: the delivery must not begin. Frames are counted from 1 again.
    bool admit(const std::shared_ptr<Delivery>& delivery);
    // After the delegate's call with this frame.
    void put(const std::shared_ptr<SlotFrame>& frame);
    // The next frame's number is one more.
    void countFrom(uint32_t number);
    void ended(const Delivery* delivery, const std::string& why);

private:
    friend class SlotReader;
    using Lock = std::unique_lock<std::mutex>;

    static std::shared_ptr<FrameSlot> existing(const void* delegate);
    void shut();
    void close();
    void finish(const std::string& why);
    void makeReadable();
    void tellAll();

    const void* const delegate_;
    mutable std::mutex mutex_; // of the rest
    std::condition_variable changed_;
    bool shut_ = false;
    bool kept_ = false;
    bool awaited_ = false; // a start that has no delivery yet
    bool over_ = false;
    std::string why_;
    std::vector<std::weak_ptr<Delivery>> deliveries_;
    const Delivery* newestDelivery_ = nullptr; // only told apart from others
    std::shared_ptr<SlotFrame> newest_;
    uint64_t serial_ = 0; // of the newest frame; never begins again
    uint32_t number_ = 0; // of the newest frame since the start
    std::vector<SlotReader*> readers_;
};

} // namespace ostrel

#endif
