#include "platform/QTKit/frame_slot.h"

#include "platform/QTKit/delivery.h"
#include "platform/QTKit/slot_frame.h"
#include "platform/QTKit/slot_reader.h"

#include <algorithm>
#include <map>
#include <new>

namespace ostrel {

namespace {

struct SlotTable {
    struct Entry {
        std::weak_ptr<FrameSlot> slot;
        std::shared_ptr<FrameSlot> kept; // with what must not be forgotten before the delegate is
    };
    std::mutex mutex;
    std::map<const void*, Entry> entries;
};

// Never destroyed: deliveries and clients' static objects may outlive the static destructors.
SlotTable& slotTable() {
    static SlotTable* const table = new SlotTable;
    return *table;
}

const char STOPPED[] = "The capture was stopped";
const char NOT_STARTED[] = "The camera could not be started: it has gone, or there was no memory";

void keep(const std::shared_ptr<FrameSlot>& slot, const void* delegate) {
    SlotTable& table = slotTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    table.entries[delegate].kept = slot;
}

} // namespace

std::shared_ptr<FrameSlot> FrameSlot::of(const void* delegate) {
    SlotTable& table = slotTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    SlotTable::Entry& entry = table.entries[delegate];
    std::shared_ptr<FrameSlot> slot = entry.slot.lock();
    if (!slot) {
        slot = std::make_shared<FrameSlot>(delegate);
        entry.slot = slot;
    }
    return slot;
}

std::shared_ptr<FrameSlot> FrameSlot::existing(const void* delegate) {
    SlotTable& table = slotTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    const auto entry = table.entries.find(delegate);
    return entry == table.entries.end() ? nullptr : entry->second.slot.lock();
}

std::shared_ptr<FrameSlot> FrameSlot::over(const std::string& why) {
    const auto slot = std::make_shared<FrameSlot>(nullptr);
    slot->finish(why);
    return slot;
}

void FrameSlot::expect(const void* delegate) {
    const std::shared_ptr<FrameSlot> slot = of(delegate);
    keep(slot, delegate);
    Lock lock(slot->mutex_);
    if (slot->shut_)
        return;
    slot->kept_ = true;
    slot->awaited_ = true;
    slot->over_ = false;
    slot->tellAll();
}

void FrameSlot::startIsOver(const void* delegate) {
    if (const std::shared_ptr<FrameSlot> slot = existing(delegate)) {
        Lock lock(slot->mutex_);
        const bool failed = slot->awaited_;
        lock.unlock();
        if (failed)
            slot->finish(NOT_STARTED);
    }
}

void FrameSlot::refuse(const void* delegate, const std::string& why) {
    if (!delegate)
        return;
    if (const std::shared_ptr<FrameSlot> slot = existing(delegate))
        slot->finish(why);
}

void FrameSlot::shut(const void* delegate) {
    const std::shared_ptr<FrameSlot> slot = of(delegate);
    keep(slot, delegate);
    slot->close();
    slot->shut();
}

void FrameSlot::close(const void* delegate) {
    if (const std::shared_ptr<FrameSlot> slot = existing(delegate))
        slot->close();
}

void FrameSlot::forget(const void* delegate) {
    std::shared_ptr<FrameSlot> slot; // let go of outside the lock
    {
        std::shared_ptr<FrameSlot> kept;
        SlotTable& table = slotTable();
        std::lock_guard<std::mutex> lock(table.mutex);
        const auto entry = table.entries.find(delegate);
        if (entry == table.entries.end())
            return;
        slot = entry->second.slot.lock();
        kept.swap(entry->second.kept);
        table.entries.erase(entry);
    }
    if (slot)
        slot->close();
}

FrameSlot::~FrameSlot() {
    SlotTable& table = slotTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    const auto entry = table.entries.find(delegate_);
    // Another slot may stand there by now, of an object that was given the same address.
    if (entry != table.entries.end() && entry->second.slot.expired())
        table.entries.erase(entry);
}

bool FrameSlot::admit(const std::shared_ptr<Delivery>& delivery) {
    std::shared_ptr<SlotFrame> before; // let go of outside the lock
    Lock lock(mutex_);
    if (shut_)
        return false;
    deliveries_.erase(std::remove_if(deliveries_.begin(), deliveries_.end(),
                                     [](const std::weak_ptr<Delivery>& one) { return one.expired(); }),
                      deliveries_.end());
    deliveries_.push_back(delivery);
    newestDelivery_ = delivery.get();
    awaited_ = false;
    number_ = 0;
    before.swap(newest_);
    tellAll();
    return true;
}

void FrameSlot::put(const std::shared_ptr<SlotFrame>& frame) {
    std::shared_ptr<SlotFrame> before; // let go of outside the lock
    Lock lock(mutex_);
    frame->serial = ++serial_;
    frame->number = ++number_;
    if (shut_ || !kept_)
        return;
    before.swap(newest_);
    newest_ = frame;
    makeReadable();
    // Who is woken with the lock held only waits for it once more.
    lock.unlock();
    changed_.notify_all();
}

void FrameSlot::countFrom(uint32_t number) {
    Lock lock(mutex_);
    number_ = number;
}

void FrameSlot::ended(const Delivery* delivery, const std::string& why) {
    {
        Lock lock(mutex_);
        if (newestDelivery_ != delivery)
            return; // of a start that another one has replaced
    }
    finish(why);
}

void FrameSlot::finish(const std::string& why) {
    Lock lock(mutex_);
    if (over_)
        return;
    over_ = true;
    awaited_ = false;
    try {
        why_ = why;
    } catch (const std::bad_alloc&) {
        why_.clear(); // the end must be told all the same
    }
    tellAll();
}

void FrameSlot::close() {
    std::shared_ptr<SlotFrame> last; // let go of outside the lock
    finish(STOPPED);
    Lock lock(mutex_);
    shut_ = true;
    last.swap(newest_);
    tellAll();
}

// With the lock held.
void FrameSlot::makeReadable() {
    for (SlotReader* reader : readers_)
        reader->updateDescriptor();
}

// With the lock held.
void FrameSlot::tellAll() {
    makeReadable();
    changed_.notify_all();
}

void FrameSlot::shut() {
    std::vector<std::weak_ptr<Delivery>> deliveries;
    {
        Lock lock(mutex_);
        deliveries.swap(deliveries_);
    }
    for (const std::weak_ptr<Delivery>& one : deliveries)
        if (const std::shared_ptr<Delivery> delivery = one.lock())
            delivery->stop();
}

} // namespace ostrel
