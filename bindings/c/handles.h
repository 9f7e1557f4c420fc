// Handles: numbers that stand for objects, so that a stale one is noticed and nothing is read through it.
#ifndef OSTREL_BINDINGS_C_HANDLES_H
#define OSTREL_BINDINGS_C_HANDLES_H

#include "bindings/c/call.h"

#include "base/monotonic_clock.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace ostrel {
namespace c {

// What a handle can stand for. Freed when its handle is closed and the last call by it has returned.
class Object {
public:
    Object() = default;
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    // Its handle was closed, while calls by it may be going on. Called once.
    virtual void end() {}
    // Readable while there is something to wait for; -1 when there is none. Any thread may ask, also while
    // another one waits.
    virtual int descriptor() { throw Failure(OSTREL_BAD_HANDLE, "Nothing can be waited for by this handle"); }

    // Waits for something to take: 1, 0 when the time is over; throws when nothing will come (any more).
    // Under its turn.
    virtual int wait(int /*timeoutMs*/) {
        throw Failure(OSTREL_BAD_HANDLE, "Nothing can be waited for by this handle");
    }

    std::atomic<bool> closed{false};
    std::mutex turn; // of calls that only one thread at a time may make
};

// The right to use an object alone. Throws when another thread has it.
class Turn {
public:
    explicit Turn(Object& object) : lock_(object.turn, std::try_to_lock) {
        if (!lock_)
            throw Failure(OSTREL_BUSY, "Another thread is in a call by this handle");
    }

private:
    std::unique_lock<std::mutex> lock_;
};

ostrel_handle addHandle(const std::shared_ptr<Object>& object);
// Throws for a handle that is none (any more).
std::shared_ptr<Object> objectOf(ostrel_handle handle);
void closeHandle(ostrel_handle handle);
[[noreturn]] void refuseKind(const char* wanted);

// what: "a capture"
template <typename T>
std::shared_ptr<T> objectOf(ostrel_handle handle, const char* what) {
    std::shared_ptr<T> object = std::dynamic_pointer_cast<T>(objectOf(handle));
    if (!object)
        refuseKind(what);
    return object;
}

// Waits by wait(ms), which answers 0 when its time is over, for timeoutMs milliseconds in all (negative: for
// ever), and looks between whether the handle was closed: nothing else could end such a wait.
template <typename Wait>
int waitUnlessClosed(const Object& object, int32_t timeoutMs, Wait wait) {
    const int64_t SLICE = 100 * NANOSECONDS_PER_MILLISECOND;
    const int64_t until = monotonicNanoseconds() + timeoutMs * NANOSECONDS_PER_MILLISECOND;
    for (;;) {
        const int64_t left = timeoutMs < 0 ? SLICE : until - monotonicNanoseconds();
        // Rounded up: a wait that ends a little early would be followed by many short ones.
        const int64_t slice = std::min(std::max<int64_t>(left, 0), SLICE) + NANOSECONDS_PER_MILLISECOND - 1;
        const int answer = wait(static_cast<int>(slice / NANOSECONDS_PER_MILLISECOND));
        if (object.closed)
            throw Failure(OSTREL_BAD_HANDLE, "The handle was closed by another thread");
        if (answer != 0 || left <= 0)
            return answer;
    }
}

} // namespace c
} // namespace ostrel

#endif
