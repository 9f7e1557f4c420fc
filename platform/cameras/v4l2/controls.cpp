#include "platform/cameras/v4l2/controls.h"

#include "platform/cameras/control_ids.h"
#include "platform/cameras/control_rules.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/v4l2/control_calls.h"
#include "platform/cameras/v4l2/video_node.h"

#include <cerrno>
#include <linux/videodev2.h>
#include <set>

namespace ostrel {
namespace cameras {
namespace v4l2 {

static_assert(controlid::USER_CLASS == V4L2_CTRL_CLASS_USER && controlid::BRIGHTNESS == V4L2_CID_BRIGHTNESS &&
                  controlid::HUE == V4L2_CID_HUE &&
                  controlid::AUTO_WHITE_BALANCE == V4L2_CID_AUTO_WHITE_BALANCE &&
                  controlid::RED_BALANCE == V4L2_CID_RED_BALANCE &&
                  controlid::BLUE_BALANCE == V4L2_CID_BLUE_BALANCE &&
                  controlid::EXPOSURE == V4L2_CID_EXPOSURE && controlid::AUTOGAIN == V4L2_CID_AUTOGAIN &&
                  controlid::GAIN == V4L2_CID_GAIN && controlid::HUE_AUTO == V4L2_CID_HUE_AUTO &&
                  controlid::WHITE_BALANCE_TEMPERATURE == V4L2_CID_WHITE_BALANCE_TEMPERATURE &&
                  controlid::CHROMA_AGC == V4L2_CID_CHROMA_AGC &&
                  controlid::AUTOBRIGHTNESS == V4L2_CID_AUTOBRIGHTNESS &&
                  controlid::CHROMA_GAIN == V4L2_CID_CHROMA_GAIN,
              "the library's numbers are the kernel's");
static_assert(controlid::EXPOSURE_AUTO == V4L2_CID_EXPOSURE_AUTO &&
                  controlid::EXPOSURE_ABSOLUTE == V4L2_CID_EXPOSURE_ABSOLUTE &&
                  controlid::FOCUS_ABSOLUTE == V4L2_CID_FOCUS_ABSOLUTE &&
                  controlid::FOCUS_AUTO == V4L2_CID_FOCUS_AUTO &&
                  controlid::IRIS_ABSOLUTE == V4L2_CID_IRIS_ABSOLUTE &&
                  controlid::PRESET_WHITE_BALANCE == V4L2_CID_AUTO_N_PRESET_WHITE_BALANCE &&
                  controlid::ISO_SENSITIVITY == V4L2_CID_ISO_SENSITIVITY &&
                  controlid::ISO_SENSITIVITY_AUTO == V4L2_CID_ISO_SENSITIVITY_AUTO,
              "the library's numbers are the kernel's");

namespace {

// More than any driver keeps for one reader.
const int MOST_EVENTS = 1024;

// The node is open for as long as the watch lives; its events are that descriptor's alone.
class NodeWatch : public ControlWatch {
public:
    NodeWatch(std::shared_ptr<VideoNode> node, int events, std::string where)
        : node_(std::move(node)), events_(events), where_(std::move(where)) {}
    ~NodeWatch() override { node_->kernel().closeEvents(events_); }
    NodeWatch(const NodeWatch&) = delete;
    NodeWatch& operator=(const NodeWatch&) = delete;

    int descriptor() const override { return events_; }

    Error take(std::vector<Control>& changed) override {
        std::set<uint32_t> told;
        int error = 0;
        for (int left = MOST_EVENTS; left > 0 && !error; --left) {
            v4l2_event event = {};
            error = node_->ioctl(VIDIOC_DQEVENT, &event);
            if (!error && event.type == V4L2_EVENT_CTRL)
                told.insert(event.id);
        }
        if (error == ENODEV)
            return unplugged(where_);
        if (told.empty())
            return Error();
        std::vector<Control> now;
        if (const int failed = listControls(*node_, now))
            return controlsRefused(where_, failed);
        findAutomatic(now);
        for (Control& control : now)
            if (told.count(control.id))
                changed.push_back(std::move(control));
        return Error();
    }

private:
    const std::shared_ptr<VideoNode> node_;
    const int events_;
    const std::string where_;
};

// Whether the driver tells of one of them at least.
bool subscribe(const VideoNode& node, const std::vector<Control>& controls) {
    bool tells = false;
    for (const Control& control : controls) {
        v4l2_event_subscription subscription = {};
        subscription.type = V4L2_EVENT_CTRL;
        subscription.id = control.id;
        tells = node.ioctl(VIDIOC_SUBSCRIBE_EVENT, &subscription) == 0 || tells;
    }
    return tells;
}

} // namespace

Error V4l2Controls::open(std::shared_ptr<VideoNode>& node) const {
    if (discovery_->generation(path_) != generation_)
        return unplugged(where_);
    node = VideoNode::open(kernel_, path_);
    return node ? Error() : openFailed(where_, errno);
}

Error V4l2Controls::list(const VideoNode& node, std::vector<Control>& controls) const {
    if (const int error = listControls(node, controls))
        return controlsRefused(where_, error);
    findAutomatic(controls);
    return controls.empty() ? noControls(where_) : Error();
}

Error V4l2Controls::list(std::vector<Control>& controls) {
    std::shared_ptr<VideoNode> node;
    const Error refused = open(node);
    return refused ? refused : list(*node, controls);
}

Error V4l2Controls::set(const std::vector<Control>& wanted) {
    std::shared_ptr<VideoNode> node;
    if (const Error refused = open(node))
        return refused;
    const Control* culprit = nullptr;
    const int error = setValues(*node, wanted, culprit);
    if (!error)
        return Error();
    return culprit ? controlRefused(where_, *culprit, error) : controlsRefused(where_, error);
}

Error V4l2Controls::watch(std::unique_ptr<ControlWatch>& watch) {
    std::shared_ptr<VideoNode> node;
    if (const Error refused = open(node))
        return refused;
    std::vector<Control> controls;
    if (const Error refused = list(*node, controls))
        return refused;
    if (!subscribe(*node, controls))
        return controlsUnwatched(where_);
    const int events = kernel_->openEvents(node->descriptor());
    if (events < 0)
        return controlsRefused(where_, errno);
    watch = std::make_unique<NodeWatch>(std::move(node), events, where_);
    return Error();
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
