// The camera behind OVideoPushCamera.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PUSH_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PUSH_BACKEND_H

#include "platform/cameras/backend.h"
#include "platform/cameras/pixels/pixel_pool.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace ostrel {
namespace cameras {

// Has no thread of its own: the sinks are called on the thread that pushes. Pushes may come from any thread,
// also while the stream starts or stops; those at the same time go one after the other.
class PushBackend : public Backend {
public:
    bool attached() const override { return true; }
    Error open() override { return Error(); }
    void close() override {}
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    const char* threadName() const override { return nullptr; }

    // False when the arguments are refused, when nobody captures, when there is no memory, and from inside a
    // sink's call.
    bool push(const uint8_t* bgra, int width, int height, int stride);
    bool pushI420(const uint8_t* i420, int width, int height);

private:
    struct Listener {
        std::shared_ptr<Outlet> outlet; // null while nobody captures
        std::shared_ptr<pixels::PixelPool> pool;
    };
    Listener listener();
    bool deliver(const Listener& to, const Mode& mode, pixels::PixelPool::Block memory,
                 const pixels::Picture& picture);

    std::atomic<uint32_t> pushed_{0}; // since the stream was started
    std::mutex mutex_;
    Listener listener_;
};

} // namespace cameras
} // namespace ostrel

#endif
