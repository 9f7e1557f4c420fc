// A sink that keeps the newest frame, as a capture does, remembers what it was told, and lets a test wait.
#ifndef OSTREL_TESTS_SUPPORT_RECORDING_SINK_H
#define OSTREL_TESTS_SUPPORT_RECORDING_SINK_H

#include "platform/cameras/camera.h"
#include "support/gate.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel::support {

// Thread-safe.
class RecordingSink : public cameras::FrameSink {
public:
    using FramePointer = std::shared_ptr<cameras::CameraFrame>;

    // Set these before the start. Called on the delivery thread without a lock.
    std::function<void(const FramePointer&)> onFrame;
    std::function<void()> onEnd;
    bool keepAll = false;

    void frameArrived(const FramePointer& frame) override {
        FramePointer before;
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++frames_;
            if (keepAll)
                all_.push_back(frame);
            before.swap(newest_);
            newest_ = frame;
        }
        before.reset();
        changed_.notify_all();
        if (!onFrame)
            return;
        onFrame(frame);
        { std::lock_guard<std::mutex> lock(mutex_); } // so that waitUntil() misses nothing
        changed_.notify_all();
    }
    void streamEnded(const cameras::Error& why) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            why_ = why;
            ends_.push_back(why.text);
        }
        changed_.notify_all();
        if (!onEnd)
            return;
        onEnd();
        { std::lock_guard<std::mutex> lock(mutex_); }
        changed_.notify_all();
    }

    bool waitForFrames(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, HANG, [&] { return frames_ >= count; });
    }
    bool waitForMoreFrames(int count) { return waitForFrames(frames() + count); }
    bool waitForEnd() {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, HANG, [&] { return !ends_.empty(); });
    }
    // Asks again after each frame and the end; the condition is one that onFrame or onEnd brings about.
    template <typename Condition>
    bool waitUntil(Condition condition) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, HANG, condition);
    }

    int frames() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return frames_;
    }
    std::vector<std::string> ends() const { // in words
        std::lock_guard<std::mutex> lock(mutex_);
        return ends_;
    }
    cameras::Error why() const { // of the last end
        std::lock_guard<std::mutex> lock(mutex_);
        return why_;
    }
    FramePointer newest() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return newest_;
    }
    std::vector<FramePointer> takeAll() {
        std::lock_guard<std::mutex> lock(mutex_);
        newest_.reset();
        return std::move(all_);
    }
    void drop() { takeAll(); }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int frames_ = 0;
    cameras::Error why_;
    std::vector<std::string> ends_;
    FramePointer newest_;
    std::vector<FramePointer> all_;
};

} // namespace ostrel::support

#endif
