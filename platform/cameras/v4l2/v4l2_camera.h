// A camera behind a V4L2 device node.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_V4L2_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_V4L2_CAMERA_H

#include "platform/cameras/camera.h"
#include "platform/cameras/v4l2/discovery.h"
#include "platform/cameras/v4l2/kernel_calls.h"
#include "platform/cameras/v4l2/stream.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Thread-safe.
class V4l2Camera final : public Camera {
public:
    // The camera is the device that the node is now: once another one has taken its place it is unplugged.
    V4l2Camera(const std::shared_ptr<KernelCalls>& kernel, const std::shared_ptr<Discovery>& discovery,
               const NodeFacts& facts, const std::string& identifier, const std::string& displayName);
    ~V4l2Camera() override;

    std::string identifier() const override { return identifier_; }
    std::string displayName() const override { return displayName_; }
    Error open() override;
    void close() override;
    Error start(int width, int height, const std::shared_ptr<FrameSink>& sink) override;
    void stop(const std::shared_ptr<FrameSink>& sink) override;
    bool attached() const override;
    StreamStatistics statistics() const override;

private:
    using Lock = std::unique_lock<std::mutex>;

    bool waitUntilSettled(Lock& lock);
    void retire(Lock& lock);
    std::string where() const;

    const std::shared_ptr<KernelCalls> kernel_;
    const std::shared_ptr<Discovery> discovery_;
    const std::string path_;
    const std::string incarnation_;
    const std::string identifier_;
    const std::string displayName_;

    mutable std::mutex mutex_; // never held while a stream is being finished or a sink is called
    std::condition_variable settled_;
    int finishing_ = 0; // streams that are being finished
    std::shared_ptr<VideoNode> node_;
    std::shared_ptr<Stream> stream_;             // running, or ended by itself
    std::vector<std::weak_ptr<Stream>> retired_; // that may still be inside a sink's call
    StreamStatistics last_;
    bool gone_ = false;
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
