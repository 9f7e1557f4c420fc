// A sink that remembers what it was told, and lets a test wait for it.
#ifndef OSTREL_TESTS_VIRTUAL_RECORDING_SINK_H
#define OSTREL_TESTS_VIRTUAL_RECORDING_SINK_H

#include "pictures.h"

#include "platform/cameras/camera.h"
#include "platform/cameras/registry.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Long enough for any machine: reached only when something hangs.
const std::chrono::seconds PATIENCE(60);

class RecordingSink : public ostrel::cameras::FrameSink {
public:
    using FramePointer = std::shared_ptr<ostrel::cameras::CameraFrame>;

    // Called, without a lock, inside each frameArrived().
    std::function<void(const FramePointer&)> onFrame;
    std::function<void()> onEnd;

    void frameArrived(const FramePointer& frame) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ++arrived_;
            last_ = frame;
        }
        changed_.notify_all();
        if (!onFrame)
            return;
        onFrame(frame);
        { std::lock_guard<std::mutex> lock(mutex_); } // so that waitUntil() misses nothing
        changed_.notify_all();
    }

    void streamEnded(const ostrel::cameras::Error& why) override {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            ends_.push_back(why.text);
        }
        changed_.notify_all();
        if (onEnd)
            onEnd();
    }

    bool waitForFrames(int count) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, PATIENCE, [&] { return arrived_ >= count; });
    }
    bool waitForMoreFrames(int count) { return waitForFrames(arrived() + count); }
    // Asks again after each frame; the condition is one that onFrame brings about.
    template <typename Condition>
    bool waitUntil(Condition condition) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, PATIENCE, condition);
    }
    bool waitForEnd() {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, PATIENCE, [&] { return !ends_.empty(); });
    }

    int arrived() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return arrived_;
    }
    std::vector<std::string> ends() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return ends_;
    }
    FramePointer last() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return last_;
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    int arrived_ = 0;
    std::vector<std::string> ends_;
    FramePointer last_;
};

// The camera with the identifier as the listing has it, or null.
inline std::shared_ptr<ostrel::cameras::Camera> listed(const std::string& identifier) {
    for (const auto& camera : ostrel::cameras::attachedCameras())
        if (camera->identifier() == identifier)
            return camera;
    return nullptr;
}

struct Reading {
    bool converted = false;
    bool decoded = false;
    uint32_t counter = 0;
    uint32_t clock = 0;
};

// Takes the frame and reads the test pattern's stamp.
inline Reading read(const RecordingSink::FramePointer& frame, int width = 160, int height = 120) {
    Reading reading;
    pictures::Bgra picture(width, height);
    reading.converted = frame && frame->convert(picture.bytes.data(), width, height, picture.stride);
    reading.decoded = reading.converted && pictures::decode(picture, reading.counter, reading.clock);
    return reading;
}

#endif
