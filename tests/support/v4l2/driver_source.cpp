// What comes in at the scripted driver, where it is a receiver's: timings; and the events that tell of
// changes.
#include "support/v4l2/driver.h"

#include <algorithm>

namespace ostrel::support {

namespace {

// Sizes are all that matters here; a receiver counts blanking as well.
void tell(const cameras::Size& size, v4l2_dv_timings& timings) {
    timings = {};
    timings.type = V4L2_DV_BT_656_1120;
    timings.bt.width = static_cast<uint32_t>(size.width);
    timings.bt.height = static_cast<uint32_t>(size.height);
    timings.bt.pixelclock = static_cast<uint64_t>(size.width) * static_cast<uint64_t>(size.height) * 60;
}

} // namespace

int Driver::sourceQuestion(unsigned long request, void* argument) {
    if (!isReceiver())
        return ENOTTY;
    switch (static_cast<uint32_t>(request)) {
    case VIDIOC_QUERY_DV_TIMINGS:
        if (incoming_.width == 0)
            return ENOLINK;
        tell(incoming_, *static_cast<v4l2_dv_timings*>(argument));
        return 0;
    case VIDIOC_G_DV_TIMINGS:
        tell(timings_, *static_cast<v4l2_dv_timings*>(argument));
        return 0;
    case VIDIOC_S_DV_TIMINGS: {
        const v4l2_dv_timings& asked = *static_cast<v4l2_dv_timings*>(argument);
        cameras::Size size;
        size.width = static_cast<int>(asked.bt.width);
        size.height = static_cast<int>(asked.bt.height);
        if (size.width < 1 || size.height < 1 || size.width > 4096 || size.height > 4096)
            return EINVAL;
        if (!(size == timings_) && owner_ >= 0)
            return EBUSY;
        timings_ = size;
        format_ = granted(format_.type, format_.pix);
        return 0;
    }
    default:
        return ENOTTY;
    }
}

int Driver::eventQuestion(Handle& handle, unsigned long request, void* argument) {
    if (!isReceiver() && (device_.controls.empty() || !device_.tellsOfControls))
        return ENOTTY;
    if (static_cast<uint32_t>(request) == VIDIOC_SUBSCRIBE_EVENT)
        return subscribe(handle, *static_cast<v4l2_event_subscription*>(argument));
    if (handle.told.empty())
        return ENOENT;
    *static_cast<v4l2_event*>(argument) = handle.told.front();
    handle.told.erase(handle.told.begin());
    rearm();
    return 0;
}

int Driver::subscribe(Handle& handle, const v4l2_event_subscription& wanted) {
    if (wanted.type == V4L2_EVENT_SOURCE_CHANGE && isReceiver() && wanted.id == 0) {
        handle.wantsSource = true;
        return 0;
    }
    if (wanted.type != V4L2_EVENT_CTRL || !control(wanted.id))
        return EINVAL;
    handle.wantsControls.insert(wanted.id);
    rearm();
    return 0;
}

void Driver::changeSource(const cameras::Size& size) {
    incoming_ = size;
    v4l2_event event = {};
    event.type = V4L2_EVENT_SOURCE_CHANGE;
    event.u.src_change.changes = V4L2_EVENT_SRC_CH_RESOLUTION;
    for (auto& handle : handles_)
        if (handle.second.wantsSource)
            handle.second.told.push_back(event);
    rearm();
}

} // namespace ostrel::support
