#include "platform/cameras/v4l2/signal_source.h"

#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// More than any driver keeps for one reader.
const int MOST_EVENTS = 64;

// False where the node has no inputs.
bool presentInput(const VideoNode& node, v4l2_input& input) {
    int index = 0;
    if (node.ioctl(VIDIOC_G_INPUT, &index) != 0)
        return false;
    input = {};
    input.index = static_cast<uint32_t>(index);
    return node.ioctl(VIDIOC_ENUMINPUT, &input) == 0;
}

} // namespace

void followSource(const VideoNode& node) {
    v4l2_input input = {};
    if (!presentInput(node, input))
        return;
    v4l2_event_subscription subscription = {};
    subscription.type = V4L2_EVENT_SOURCE_CHANGE;
    subscription.id = input.index;
    const bool tells = node.ioctl(VIDIOC_SUBSCRIBE_EVENT, &subscription) == 0; // again, it changes nothing
    if (input.capabilities & V4L2_IN_CAP_DV_TIMINGS) {
        v4l2_dv_timings timings = {};
        // Without a signal, or while another program streams, the timings stay as they are.
        if (node.ioctl(VIDIOC_QUERY_DV_TIMINGS, &timings) == 0)
            node.ioctl(VIDIOC_S_DV_TIMINGS, &timings);
    }
    // What it has told up to now is done with; some drivers tell of the timings that were just set.
    if (tells)
        sourceHasChanged(node);
}

bool sourceHasChanged(const VideoNode& node) {
    bool changed = false;
    for (int left = MOST_EVENTS; left > 0; --left) {
        v4l2_event event = {};
        if (node.ioctl(VIDIOC_DQEVENT, &event) != 0)
            break;
        if (event.type == V4L2_EVENT_SOURCE_CHANGE &&
            (event.u.src_change.changes & V4L2_EVENT_SRC_CH_RESOLUTION))
            changed = true;
    }
    return changed;
}

bool hasNoSignal(const VideoNode& node) {
    v4l2_input input = {};
    return presentInput(node, input) &&
           (input.status & (V4L2_IN_ST_NO_POWER | V4L2_IN_ST_NO_SIGNAL | V4L2_IN_ST_NO_SYNC));
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
