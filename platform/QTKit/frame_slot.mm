#include "platform/QTKit/frame_slot.h"

#include "platform/QTKit/delivery.h"

#include <algorithm>
#include <map>

namespace ostrel {

namespace {

struct SlotTable {
    struct Entry {
        std::weak_ptr<FrameSlot> slot;
        std::shared_ptr<FrameSlot> kept; // shut, which must not be forgotten before the delegate is
    };
    std::mutex mutex;
    std::map<const void*, Entry> entries;
};

// Never destroyed: deliveries and clients' static objects may outlive the static destructors.
SlotTable& slotTable() {
    static SlotTable* const table = new SlotTable;
    return *table;
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

void FrameSlot::shut(const void* delegate) {
    const std::shared_ptr<FrameSlot> slot = of(delegate);
    {
        SlotTable& table = slotTable();
        std::lock_guard<std::mutex> lock(table.mutex);
        table.entries[delegate].kept = slot;
    }
    slot->shut();
}

void FrameSlot::forget(const void* delegate) {
    std::shared_ptr<FrameSlot> kept; // let go of outside the lock
    SlotTable& table = slotTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    const auto entry = table.entries.find(delegate);
    if (entry == table.entries.end())
        return;
    kept.swap(entry->second.kept);
    table.entries.erase(entry);
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
    std::lock_guard<std::mutex> lock(mutex_);
    if (shut_)
        return false;
    deliveries_.erase(std::remove_if(deliveries_.begin(), deliveries_.end(),
                                     [](const std::weak_ptr<Delivery>& one) { return one.expired(); }),
                      deliveries_.end());
    deliveries_.push_back(delivery);
    return true;
}

void FrameSlot::shut() {
    std::vector<std::weak_ptr<Delivery>> deliveries;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        shut_ = true;
        deliveries.swap(deliveries_);
    }
    for (const std::weak_ptr<Delivery>& one : deliveries)
        if (const std::shared_ptr<Delivery> delivery = one.lock())
            delivery->stop();
}

} // namespace ostrel
