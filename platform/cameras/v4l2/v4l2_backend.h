// What is V4L2's own in a camera's life.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_V4L2_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_V4L2_BACKEND_H

#include "platform/cameras/sequence_gaps.h"
#include "platform/cameras/streaming_camera.h"
#include "platform/cameras/v4l2/buffer_queue.h"
#include "platform/cameras/v4l2/discovery.h"
#include "platform/cameras/v4l2/identity.h"
#include "platform/cameras/v4l2/kernel_calls.h"
#include "platform/cameras/v4l2/video_node.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

class V4l2Backend final : public Backend {
public:
    // The camera is the device that the node is now: once another one has taken its place it is unplugged.
    V4l2Backend(const std::shared_ptr<KernelCalls>& kernel, const std::shared_ptr<Discovery>& discovery,
                const NodeFacts& facts, const std::string& where);

    bool attached() const override;
    bool mayBeOpened() const override { return discovery_->mayBeOpened(path_); }
    std::shared_ptr<Controls> controls() const override { return controls_; }
    Error open() override;
    void close() override;
    Error modes(NativeModes& modes) override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    bool canServeBetter(const Request& request) override;
    const char* threadName() const override { return "ostrel-v4l2"; }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    int64_t longestPause() override;

private:
    Error openNode(std::shared_ptr<VideoNode>& opened, bool& multiplanar) const;
    Error nothingFits(const Request& request) const;
    std::vector<Candidate> candidatesFor(const Request& request) const;
    int tryToStart(const Candidate& candidate, const Request& request, std::string& step);
    Error drain(bool broken, Arrival& arrival);
    Error dequeueFailed(int error, bool broken);
    bool isTheLast(const Filled& filled) const;
    bool accept(const Filled& filled);
    Error ended(int error) const;

    const std::shared_ptr<KernelCalls> kernel_;
    const std::shared_ptr<Discovery> discovery_;
    const std::string path_;
    const std::string generation_;
    const std::string where_; // for messages
    const std::shared_ptr<Controls> controls_;

    std::shared_ptr<VideoNode> node_; // while it is open
    bool multiplanar_ = false;
    std::shared_ptr<Figures> figures_;   // of the running stream
    std::shared_ptr<BufferQueue> queue_; // while it streams
    SequenceGaps gaps_;
    int failuresInARow_ = 0;
};

std::shared_ptr<StreamingCamera> makeCamera(const std::shared_ptr<KernelCalls>& kernel,
                                            const std::shared_ptr<Discovery>& discovery,
                                            const NodeFacts& facts, const std::string& identifier,
                                            const std::string& displayName,
                                            const NodeTexts& texts = NodeTexts());

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
