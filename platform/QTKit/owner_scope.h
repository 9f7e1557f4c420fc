// On whose behalf a thread opens and closes devices.
#ifndef OSTREL_PLATFORM_QTKIT_OWNER_SCOPE_H
#define OSTREL_PLATFORM_QTKIT_OWNER_SCOPE_H

namespace ostrel {

// QTCaptureDevice is shared by all who capture from a camera, and its open: and close do not say who calls. A
// capture session closes its device also when the device would not open for it; without this it would take
// back an open of somebody else. Bound to its thread; nests.
class OwnerScope {
public:
    explicit OwnerScope(const void* owner) : before_(slot()) { slot() = owner; }
    ~OwnerScope() { slot() = before_; }
    OwnerScope(const OwnerScope&) = delete;
    OwnerScope& operator=(const OwnerScope&) = delete;

    static const void* current() { return slot(); } // null: nobody in particular

private:
    static const void*& slot() {
        static thread_local const void* owner = 0;
        return owner;
    }
    const void* const before_;
};

} // namespace ostrel

#endif
