// Which controls a node has, and what is known of each.
#include "platform/cameras/device_texts.h"
#include "platform/cameras/v4l2/control_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// A driver that never says "no more" must not hold up anybody.
const int MOST_CONTROLS = 1024;
const int64_t MOST_ITEMS = 1024;
// Cameras that break off at a control of theirs: so many numbers further on there may be the next.
const int MOST_SKIPPED = 64;

template <typename Character, size_t N>
std::string text(const Character (&bytes)[N]) {
    const char* const chars = reinterpret_cast<const char*>(bytes);
    return validUtf8(std::string(chars, ::strnlen(chars, N)));
}

bool isKnown(uint32_t type) {
    switch (type) {
    case V4L2_CTRL_TYPE_INTEGER:
    case V4L2_CTRL_TYPE_BOOLEAN:
    case V4L2_CTRL_TYPE_MENU:
    case V4L2_CTRL_TYPE_BUTTON:
    case V4L2_CTRL_TYPE_INTEGER64:
    case V4L2_CTRL_TYPE_STRING:
    case V4L2_CTRL_TYPE_BITMASK:
    case V4L2_CTRL_TYPE_INTEGER_MENU:
        return true;
    default:
        return false;
    }
}

// Of the older and of the newer call's answer alike.
template <typename Answer>
Control controlOf(const Answer& answer) {
    Control control;
    control.id = answer.id;
    control.name = text(answer.name);
    control.type = static_cast<Control::Type>(answer.type);
    control.minimum = static_cast<int64_t>(answer.minimum);
    control.maximum = static_cast<int64_t>(answer.maximum);
    control.step = static_cast<int64_t>(answer.step);
    control.defaultValue = static_cast<int64_t>(answer.default_value);
    if (control.type == Control::Type::Bitmask) { // all of them are unsigned
        control.maximum = static_cast<uint32_t>(control.maximum);
        control.defaultValue = static_cast<uint32_t>(control.defaultValue);
    }
    control.inactive = answer.flags & V4L2_CTRL_FLAG_INACTIVE;
    control.readOnly = answer.flags & V4L2_CTRL_FLAG_READ_ONLY;
    control.writeOnly = answer.flags & V4L2_CTRL_FLAG_WRITE_ONLY;
    control.isVolatile = answer.flags & V4L2_CTRL_FLAG_VOLATILE;
    control.grabbed = answer.flags & V4L2_CTRL_FLAG_GRABBED;
    return control;
}

void askItems(const VideoNode& node, Control& control) {
    const int64_t first = std::clamp<int64_t>(control.minimum, 0, INT32_MAX);
    const int64_t last = std::min({control.maximum, first + MOST_ITEMS - 1, int64_t(INT32_MAX)});
    for (int64_t index = first; index <= last; ++index) {
        v4l2_querymenu item = {};
        item.id = control.id;
        item.index = static_cast<uint32_t>(index);
        if (node.ioctl(VIDIOC_QUERYMENU, &item) != 0)
            continue; // a hole
        control.items[static_cast<int>(index)] = control.type == Control::Type::IntegerMenu
                                                     ? std::to_string(static_cast<int64_t>(item.value))
                                                     : text(item.name);
    }
}

template <typename Answer>
void take(const VideoNode& node, const Answer& answer, std::vector<Control>& controls) {
    if ((answer.flags & V4L2_CTRL_FLAG_DISABLED) || !isKnown(answer.type))
        return;
    Control control = controlOf(answer);
    if (control.type == Control::Type::Menu || control.type == Control::Type::IntegerMenu)
        askItems(node, control);
    controls.push_back(std::move(control));
}

// Asks from one control for the next, by either call. 0 at the end, else errno: ENOTTY or EINVAL before the
// first when the driver does not know the question.
template <typename Answer>
int askOneAfterAnother(const VideoNode& node, unsigned long request, std::vector<Control>& controls) {
    uint32_t last = 0;
    int skipped = 0;
    for (int left = MOST_CONTROLS; left > 0; --left) {
        Answer answer = {};
        answer.id = last | V4L2_CTRL_FLAG_NEXT_CTRL;
        const int error = node.ioctl(request, &answer);
        if (error == ENOTTY || error == ENODEV || (error == EINVAL && last == 0))
            return error;
        if (error == EINVAL)
            return 0;
        if (error) { // the camera did not answer about the next one, whichever that is
            if (++skipped > MOST_SKIPPED)
                return controls.empty() ? error : 0;
            last = last ? last + 1 : V4L2_CID_BASE;
            continue;
        }
        if (answer.id <= last)
            return 0; // it goes round in circles
        last = answer.id;
        skipped = 0;
        take(node, answer, controls);
    }
    return 0;
}

// As it was done before there was a way to ask for the next one.
int askEach(const VideoNode& node, std::vector<Control>& controls) {
    const auto ask = [&](uint32_t id) {
        v4l2_queryctrl answer = {};
        answer.id = id;
        const int error = node.ioctl(VIDIOC_QUERYCTRL, &answer);
        if (!error)
            take(node, answer, controls);
        return error;
    };
    int error = 0;
    for (uint32_t id = V4L2_CID_BASE; id < V4L2_CID_LASTP1 && error != ENOTTY && error != ENODEV; ++id)
        error = ask(id);
    for (uint32_t id = V4L2_CID_PRIVATE_BASE; id < V4L2_CID_PRIVATE_BASE + MOST_CONTROLS && !error; ++id)
        error = ask(id);
    return error == ENODEV ? error : 0;
}

} // namespace

int listControls(const VideoNode& node, std::vector<Control>& controls) {
    int error = askOneAfterAnother<v4l2_query_ext_ctrl>(node, VIDIOC_QUERY_EXT_CTRL, controls);
    if (error == ENOTTY || error == EINVAL)
        error = askOneAfterAnother<v4l2_queryctrl>(node, VIDIOC_QUERYCTRL, controls);
    if (error == EINVAL)
        error = askEach(node, controls);
    if (error)
        return error == ENOTTY ? 0 : error;
    return controls.empty() ? 0 : readValues(node, controls);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
