// A running capture from one PipeWire node.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CAPTURE_STREAM_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_CAPTURE_STREAM_H

#include "platform/cameras/pipewire/connection.h"
#include "platform/cameras/pipewire/stream_buffers.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Of "error set output format: -16 (Device or resource busy)" the number, where there is one.
int errnoIn(const char* words, int otherwise);

// begin(), wait() and the end belong to one thread at a time.
class CaptureStream : private Watcher {
public:
    // node: of this moment, serial: what stays.
    CaptureStream(std::shared_ptr<Connection> connection, uint32_t node, std::string serial,
                  std::shared_ptr<Figures> figures);
    // No callback is in progress after it and none will come. Waits neither for a frame nor for the daemon.
    ~CaptureStream() override;
    CaptureStream(const CaptureStream&) = delete;
    CaptureStream& operator=(const CaptureStream&) = delete;

    // Asks for the picture, which is one of the node's offers; what a node that runs already has is taken as
    // it is if it fits the wish. Waits for nothing. 0 or errno.
    int begin(const Candidate& picture, const ModeWish& wish);
    // Until the camera runs. 0, or errno: EBUSY in use, ENODEV the camera has left, EPIPE the daemon has
    // gone, EAGAIN the session manager would not connect it now, ETIMEDOUT nobody connected it by that time
    // of CLOCK_MONOTONIC.
    int wait(int64_t deadline);
    // Why it has ended by itself; 0 while it has not.
    int ended() const;
    // Of the newest picture that was granted.
    Granted granted() const;

    StreamBuffers& buffers() { return *buffers_; }
    // Whether another program captures from the same node.
    bool isShared() const { return connection_->consumers(node_) > 1; }

private:
    void nodeLeft(uint32_t node) override;
    void linkCame(uint32_t link, uint32_t from, uint32_t to) override;
    void connectionLost() override;

    void end(int error);
    static void onStateChanged(void* data, pw_stream_state, pw_stream_state state, const char* error);
    static void onParamChanged(void* data, uint32_t id, const spa_pod* param);
    static void onAddBuffer(void* data, pw_buffer* buffer);
    static void onRemoveBuffer(void* data, pw_buffer* buffer);
    static void onProcess(void* data);
    static void onLinkInfo(void* data, const pw_link_info* info);

    const std::shared_ptr<Connection> connection_;
    const uint32_t node_;
    const std::string serial_;
    const std::shared_ptr<StreamBuffers> buffers_;

    // Under the loop's lock.
    pw_stream* stream_ = nullptr;
    pw_proxy* link_ = nullptr; // from the camera to us
    spa_hook streamListener_ = {};
    spa_hook linkListener_ = {};

    mutable std::mutex mutex_; // of the rest
    std::condition_variable changed_;
    bool streaming_ = false;
    int error_ = 0;
    Granted granted_;
};

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
