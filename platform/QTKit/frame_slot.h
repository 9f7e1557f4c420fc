// Where the deliveries to one delegate are found from outside the framework.
#ifndef OSTREL_PLATFORM_QTKIT_FRAME_SLOT_H
#define OSTREL_PLATFORM_QTKIT_FRAME_SLOT_H

#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {

class Delivery;

// Thread-safe. A delegate has one for as long as somebody holds it; it is not retained, only told apart from
// others.
class FrameSlot {
public:
    // The delegate's own; made when there is none.
    static std::shared_ptr<FrameSlot> of(const void* delegate);

    // Nothing is delivered to the delegate once this has returned, whatever its sessions still do: those that
    // run are stopped, those that are being started will not deliver.
    static void shut(const void* delegate);
    // The delegate is about to be freed: another object may get its address.
    static void forget(const void* delegate);

    explicit FrameSlot(const void* delegate) : delegate_(delegate) {}
    ~FrameSlot();
    FrameSlot(const FrameSlot&) = delete;
    FrameSlot& operator=(const FrameSlot&) = delete;

    // False when the slot is shut: the delivery must not begin.
    bool admit(const std::shared_ptr<Delivery>& delivery);

private:
    void shut();

    const void* const delegate_;
    std::mutex mutex_;
    bool shut_ = false;
    std::vector<std::weak_ptr<Delivery>> deliveries_;
};

} // namespace ostrel

#endif
