// A kernel with V4L2 devices of the test's making. It fails as the real one does, with -1 and errno.
#ifndef OSTREL_TESTS_SUPPORT_V4L2_SCRIPTED_KERNEL_H
#define OSTREL_TESTS_SUPPORT_V4L2_SCRIPTED_KERNEL_H

#include "platform/cameras/v4l2/kernel_calls.h"
#include "support/gate.h"
#include "support/v4l2/call_script.h"
#include "support/v4l2/driver.h"

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel::support {

// Thread-safe. Locks: a node's, for the length of a call; then the kernel's, never while a call waits.
class ScriptedKernel : public cameras::v4l2::KernelCalls {
public:
    ~ScriptedKernel() override;

    // A device that was there before stays with those who have it open.
    void plug(const std::string& path, const DeviceScript& device);
    void unplug(const std::string& path);

    // What becomes of calls. failNext(): so many calls of this kind fail once the first `after` went well.
    CallScript& script() { return script_; }
    void failNext(unsigned long call, int error, int times = 1, int after = 0);
    // From now on such calls on the node take that long.
    void delay(const std::string& path, unsigned long call, std::chrono::milliseconds time);
    // Such calls wait at the gate until the test opens it.
    std::shared_ptr<Gate> hold(const std::string& path, unsigned long call);

    // poll() answers with these events, until the device is replaced.
    void setPollEvents(const std::string& path, short events) { now(path)->setEvents(events); }
    // No frame comes until the stream is switched off and on.
    void stall(const std::string& path) { now(path)->stall(); }
    // Another signal comes in at a receiver; of 0 x 0, none.
    void changeSource(const std::string& path, const cameras::Size& size) { now(path)->changeSource(size); }
    // Somebody else sets a control, or the camera itself.
    void setControl(const std::string& path, uint32_t id, int64_t value) { now(path)->setControl(id, value); }
    int64_t controlValue(const std::string& path, uint32_t id) { return now(path)->controlValue(id); }
    std::string controlText(const std::string& path, uint32_t id) { return now(path)->controlText(id); }
    // False when the driver has no free buffer: the frame is lost, as with real hardware.
    bool feed(const std::string& path, const FrameScript& frame) { return now(path)->feed(frame); }
    // Waits until somebody polls an empty queue, that is, until everything that was fed has been handled.
    bool waitUntilIdle(const std::string& path);

    v4l2_pix_format format(const std::string& path) { return now(path)->format().pix; }
    cameras::Interval interval(const std::string& path) { return now(path)->interval(); }
    unsigned queued(const std::string& path) { return now(path)->queued(); }
    unsigned buffers(const std::string& path) { return now(path)->buffers(); }
    bool isStreaming(const std::string& path) { return now(path)->isStreaming(); }
    uint64_t lost(const std::string& path) { return now(path)->lost(); } // frames without a buffer
    // When frame `number` of the running stream comes by itself, CLOCK_MONOTONIC; 0 before the stream runs.
    int64_t arrival(const std::string& path, uint32_t number) { return now(path)->arrival(number); }

    // Of the whole kernel: calls are counted from the start, what is open or mapped is so now.
    int calls(unsigned long call) const { return script_.calls(call); }
    int calls(const std::string& path, unsigned long call) const { return script_.calls(path, call); }
    int callsOn(const std::string& path) const { return script_.calls(path); }
    int openDescriptors();
    int mappings();
    std::vector<std::string> misuse();
    std::vector<std::string> journal();

protected:
    int doOpen(const char* path, int flags) override;
    int doClose(int descriptor) override;
    int doIoctl(int descriptor, unsigned long request, void* argument) override;
    void* doMmap(size_t length, int descriptor, long offset) override;
    int doMunmap(void* address, size_t length) override;
    int doPoll(pollfd* descriptors, unsigned long count, int milliseconds) override;
    uint32_t eventsMark() override { return EPOLLIN; } // the timers that stand for nodes have no other

    bool isOpen(int descriptor);

private:
    struct Node {
        std::string path;
        std::shared_ptr<Driver> driver;
    };
    struct Mapping {
        std::string path;
        std::shared_ptr<Driver> driver;
        size_t length;
        long offset;
    };

    Node nodeOf(int descriptor);
    Node nodeAt(const std::string& path);
    int tell(pollfd* descriptors, unsigned long count);
    std::unique_lock<std::mutex> turn(const Node& node);
    // The driver of the device that is there, for as long as the lock beside it is held.
    struct Locked {
        std::unique_lock<std::mutex> lock;
        Driver& driver;
        Driver* operator->() const { return &driver; }
    };
    Locked now(const std::string& path) {
        std::unique_lock<std::mutex> lock(mutex_);
        return {std::move(lock), *plugged_.at(path)};
    }

    CallScript script_;
    std::mutex mutex_;
    std::condition_variable idle_;
    Journal journal_;
    std::map<std::string, std::shared_ptr<Driver>> plugged_;
    std::map<int, Node> open_;
    std::map<void*, Mapping> mappings_;
};

} // namespace ostrel::support

#endif
