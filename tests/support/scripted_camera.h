// A camera that does what a test tells it.
#ifndef OSTREL_TESTS_SUPPORT_SCRIPTED_CAMERA_H
#define OSTREL_TESTS_SUPPORT_SCRIPTED_CAMERA_H

#include "platform/cameras/camera.h"
#include "platform/cameras/sink_list.h"
#include "support/gate.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace ostrel::support {

// What became of a camera's frames.
struct FrameLog {
    std::atomic<int> conversions{0};
    std::atomic<int> alive{0};
    std::atomic<bool> holdsNext{false}; // the next conversion passes the gate; later ones do not
    Gate gate;
};

// A picture in which every pixel carries the frame's number: B, G, R are its lowest 24 bits, A is 255.
class NumberedFrame : public cameras::CameraFrame {
public:
    NumberedFrame(uint32_t number, int padding, bool broken, std::shared_ptr<FrameLog> log);
    ~NumberedFrame() override;
    using CameraFrame::convert;
    bool convert(const cameras::pixels::Output& to) override;
    int rowBytes(int width) const override { return width * 4 + padding_; }

private:
    const uint32_t number_;
    const int padding_;
    const bool broken_;
    const std::shared_ptr<FrameLog> log_;
};

// The number that all pixels of a picture agree on, -1 when they do not (a torn picture) or there are none.
int numberIn(const uint8_t* bgra, std::size_t bytes);
inline int numberIn(const std::vector<uint8_t>& bgra) {
    return numberIn(bgra.data(), bgra.size());
}

// Thread-safe. Frames are delivered on the thread that calls deliver().
class ScriptedCamera : public cameras::Camera {
public:
    explicit ScriptedCamera(std::string identifier, std::string name = "Scripted camera")
        : identifier_(std::move(identifier)), name_(std::move(name)) {}

    // The script. An empty error takes a refusal back.
    void refuseOpen(const cameras::Error& why) { script(refusedOpen_, why); }
    void refuseInput(const cameras::Error& why) { script(refusedInput_, why); }
    void refuseStart(const cameras::Error& why) { script(refusedStart_, why); }
    void padRows(int bytes) { padding_ = bytes; }
    void breakPictures(bool broken) { broken_ = broken; }
    Gate& opening() { return opening_; } // open() passes here
    void unplug();

    // One frame to every started sink. False when none of them listens.
    bool deliver(uint32_t number);

    // What happened.
    int opens() const { return opens_; }
    int closes() const { return closes_; }
    bool isOpen() const { return opens_ != closes_; }
    bool isRunning() const { return !sinks_.empty(); }
    std::vector<std::pair<int, int>> sizesStarted() const;
    FrameLog& frames() const { return *log_; }

    std::string identifier() const override { return identifier_; }
    std::string displayName() const override { return name_; }
    cameras::Error open() override;
    void close() override;
    cameras::Error admitInput() override { return read(refusedInput_); }
    cameras::Error start(int width, int height, const std::shared_ptr<cameras::FrameSink>& sink) override;
    void stop(const std::shared_ptr<cameras::FrameSink>& sink) override;
    bool attached() const override { return attached_; }

private:
    void script(cameras::Error& refusal, const cameras::Error& why) {
        std::lock_guard<std::mutex> lock(mutex_);
        refusal = why;
    }
    cameras::Error read(const cameras::Error& refusal) const {
        std::lock_guard<std::mutex> lock(mutex_);
        return refusal;
    }

    const std::string identifier_;
    const std::string name_;
    mutable std::mutex mutex_;
    cameras::Error refusedOpen_, refusedInput_, refusedStart_;
    std::vector<std::pair<int, int>> sizes_;
    std::atomic<int> padding_{0}, opens_{0}, closes_{0};
    std::atomic<bool> broken_{false}, attached_{true};
    Gate opening_;
    cameras::SinkList sinks_;
    const std::shared_ptr<FrameLog> log_ = std::make_shared<FrameLog>();
};

// Delivers the frames 1, 2, 3, ... of a camera as fast as they are taken, until it is destroyed.
class Feeder {
public:
    explicit Feeder(std::shared_ptr<ScriptedCamera> camera);
    ~Feeder();
    // The number of the last frame whose delivery is over.
    uint32_t delivered() const { return delivered_.load(std::memory_order_acquire); }
    // Waits until so many more frames were delivered.
    void awaitMore(uint32_t frames) const;

private:
    std::atomic<uint32_t> delivered_{0};
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

} // namespace ostrel::support

#endif
