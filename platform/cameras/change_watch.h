// Waking those who want to know that cameras may have come or gone. What has come or gone only a new listing
// says: so nothing is lost with a message that was.
#ifndef OSTREL_PLATFORM_CAMERAS_CHANGE_WATCH_H
#define OSTREL_PLATFORM_CAMERAS_CHANGE_WATCH_H

#include <memory>

namespace ostrel {
namespace cameras {

// Bound to one thread at a time.
class ChangeWatch {
public:
    virtual ~ChangeWatch() = default;

    // To be polled for reading: readable while changed() would answer yes, and maybe when it would not. Stays
    // the same; -1 when the system has none left.
    virtual int descriptor() const = 0;
    // Whether something may have changed since the call before. To be called before the listing: what changes
    // meanwhile makes the descriptor readable again.
    virtual bool changed() = 0;
};

// Wakes its watches, which may outlive it. Thread-safe.
class ChangeSignal {
public:
    ChangeSignal();

    std::unique_ptr<ChangeWatch> watch();
    // At once, without memory, under any lock of the caller's.
    void raise() noexcept;

private:
    struct Watches;
    class Watch;
    const std::shared_ptr<Watches> watches_;
};

// What this process learns by itself: a camera has left while it was in use, a virtual one was attached,
// other providers list the cameras. A kind that is told of changes on a thread of its own raises it as well.
ChangeSignal& changesHere();

} // namespace cameras
} // namespace ostrel

#endif
