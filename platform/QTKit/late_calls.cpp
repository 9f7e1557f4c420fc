#include "platform/QTKit/late_calls.h"

#include <new>

namespace ostrel {

bool LateCalls::busy() const {
    std::lock_guard<std::mutex> lock(state_->mutex);
    return state_->calling || state_->waiting;
}

bool LateCalls::post(const Frame& frame, Call call) {
    std::lock_guard<std::mutex> thread(mutex_);
    if (!thread_.running()) {
        try {
            const auto body = [state = state_, call = std::move(call)](const cameras::StopSignal&) {
                run(state, call);
            };
            if (!thread_.start("ostrel-late", body))
                return false;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
    Frame before; // let go of outside the lock
    std::lock_guard<std::mutex> lock(state_->mutex);
    if (state_->stopped)
        return false;
    before.swap(state_->waiting);
    state_->waiting = frame;
    state_->changed.notify_all();
    return true;
}

void LateCalls::run(const std::shared_ptr<State>& state, const Call& call) {
    std::unique_lock<std::mutex> lock(state->mutex);
    state->thread = std::this_thread::get_id();
    for (;;) {
        state->changed.wait(lock, [&] { return state->stopped || state->waiting; });
        if (state->stopped)
            return;
        Frame frame;
        frame.swap(state->waiting);
        state->calling = true;
        lock.unlock();
        try {
            call(frame);
        } catch (const std::bad_alloc&) { // a frame lost for want of memory
        }
        frame.reset();
        lock.lock();
        state->calling = false;
    }
}

void LateCalls::stop() {
    Frame waiting; // let go of outside the lock
    {
        std::lock_guard<std::mutex> lock(state_->mutex);
        state_->stopped = true;
        waiting.swap(state_->waiting);
        state_->changed.notify_all();
        if (state_->thread == std::this_thread::get_id())
            return; // ends when the call that this comes from returns
    }
    std::lock_guard<std::mutex> thread(mutex_);
    thread_.stop();
}

} // namespace ostrel
