// The controls of a V4L2 camera.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_CONTROLS_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_CONTROLS_H

#include "platform/cameras/controls.h"
#include "platform/cameras/v4l2/discovery.h"
#include "platform/cameras/v4l2/kernel_calls.h"
#include "platform/cameras/v4l2/video_node.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Opens the node anew for each operation, and another time for each watch: the drivers let anybody do that
// while one streams, and no other part of a camera has to wait or to share its descriptor.
class V4l2Controls final : public Controls {
public:
    V4l2Controls(const std::shared_ptr<KernelCalls>& kernel, const std::shared_ptr<Discovery>& discovery,
                 const NodeFacts& facts, std::string where)
        : kernel_(kernel), discovery_(discovery), path_(facts.path), generation_(facts.generation),
          where_(std::move(where)) {}

    const std::string& where() const override { return where_; }
    Error list(std::vector<Control>& controls) override;
    Error set(const std::vector<Control>& wanted) override;
    Error watch(std::unique_ptr<ControlWatch>& watch) override;

private:
    Error open(std::shared_ptr<VideoNode>& node) const;
    Error list(const VideoNode& node, std::vector<Control>& controls) const;

    const std::shared_ptr<KernelCalls> kernel_;
    const std::shared_ptr<Discovery> discovery_;
    const std::string path_;
    const std::string generation_;
    const std::string where_;
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
