// The scripted driver's controls.
#include "support/v4l2/driver.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace ostrel::support {

namespace {

template <typename Character, size_t N>
void copyText(Character (&to)[N], const std::string& from) {
    std::memcpy(to, from.data(), std::min(from.size(), N - 1));
}

bool isLarge(const ControlScript& control) {
    return control.type == V4L2_CTRL_TYPE_INTEGER64 || control.type == V4L2_CTRL_TYPE_STRING;
}

} // namespace

Driver::ControlState* Driver::control(uint32_t id) {
    const auto found = std::find_if(controls_.begin(), controls_.end(),
                                    [id](const ControlState& one) { return one.script.id == id; });
    return found == controls_.end() ? nullptr : &*found;
}

const Driver::ControlState* Driver::nextControl(uint32_t id) {
    const auto found = std::find_if(controls_.begin(), controls_.end(),
                                    [id](const ControlState& one) { return one.script.id > id; });
    return found == controls_.end() ? nullptr : &*found;
}

uint32_t Driver::flagsOf(const ControlState& one) {
    const ControlState* const holder = one.script.heldBy ? control(one.script.heldBy) : nullptr;
    const std::vector<int64_t>& released = one.script.released;
    const bool held = holder && std::find(released.begin(), released.end(), holder->value) == released.end();
    return one.script.flags | (held ? V4L2_CTRL_FLAG_INACTIVE : 0u);
}

int Driver::controlQuestion(unsigned long request, void* argument) {
    const bool extended = device_.controlCalls != ControlCalls::WithoutExtended &&
                          device_.controlCalls != ControlCalls::WithoutNext;
    const bool values = device_.controlCalls != ControlCalls::ListedNotReadable;
    switch (static_cast<uint32_t>(request)) {
    case VIDIOC_QUERY_EXT_CTRL:
        return extended ? describeControl(*static_cast<v4l2_query_ext_ctrl*>(argument)) : ENOTTY;
    case VIDIOC_QUERYCTRL:
        return describeControl(*static_cast<v4l2_queryctrl*>(argument));
    case VIDIOC_QUERYMENU:
        return describe(*static_cast<v4l2_querymenu*>(argument));
    case VIDIOC_G_EXT_CTRLS:
        return extended && values ? this->values(*static_cast<v4l2_ext_controls*>(argument), false, false)
                                  : ENOTTY;
    case VIDIOC_TRY_EXT_CTRLS:
        return extended && values ? this->values(*static_cast<v4l2_ext_controls*>(argument), true, false)
                                  : ENOTTY;
    case VIDIOC_S_EXT_CTRLS:
        return extended && values ? this->values(*static_cast<v4l2_ext_controls*>(argument), true, true)
                                  : ENOTTY;
    case VIDIOC_G_CTRL:
        return values ? value(*static_cast<v4l2_control*>(argument), false) : ENOTTY;
    case VIDIOC_S_CTRL:
        return values ? value(*static_cast<v4l2_control*>(argument), true) : ENOTTY;
    default:
        return ENOTTY;
    }
}

template <typename Answer>
int Driver::describeControl(Answer& answer) {
    const uint32_t flag = V4L2_CTRL_FLAG_NEXT_CTRL;
    if ((answer.id & flag) && device_.controlCalls == ControlCalls::WithoutNext)
        return EINVAL;
    const ControlState* const found = answer.id & flag ? nextControl(answer.id & ~flag) : control(answer.id);
    if (!found)
        return EINVAL;
    using Number = decltype(answer.maximum);
    answer = {};
    answer.id = found->script.id;
    answer.type = found->script.type;
    copyText(answer.name, found->script.name);
    answer.minimum = static_cast<Number>(found->script.minimum);
    answer.maximum = static_cast<Number>(found->script.maximum);
    answer.step = static_cast<std::remove_reference_t<decltype(answer.step)>>(found->script.step);
    answer.default_value = static_cast<Number>(found->script.standard);
    answer.flags = flagsOf(*found);
    return 0;
}

int Driver::describe(v4l2_querymenu& item) {
    const ControlState* const found = control(item.id);
    if (!found || !found->script.items.count(item.index))
        return EINVAL;
    const std::string& text = found->script.items.at(item.index);
    if (found->script.type == V4L2_CTRL_TYPE_INTEGER_MENU)
        item.value = std::stoll(text);
    else
        std::memcpy(static_cast<void*>(item.name), text.c_str(), std::min<size_t>(text.size() + 1, 32));
    return 0;
}

// As the kernel's own framework does: looks at all, then sets all; what a webcam refuses, it refuses late.
int Driver::values(v4l2_ext_controls& all, bool set, bool keep) {
    all.error_idx = all.count;
    if (device_.controlCalls == ControlCalls::ExtendedOneByOne && (all.count != 1 || all.which == 0))
        return EINVAL;
    for (uint32_t i = 0; i < all.count; ++i)
        if (const int error = value(all.controls[i], set, false)) {
            if (!keep)
                all.error_idx = i;
            return error;
        }
    for (uint32_t i = 0; keep && i < all.count; ++i)
        if (const int error = value(all.controls[i], true, true)) {
            all.error_idx = i;
            return error;
        }
    return 0;
}

int Driver::value(v4l2_ext_control& one, bool set, bool keep) {
    ControlState* const found = control(one.id);
    if (!found)
        return EINVAL;
    const bool isText = found->script.type == V4L2_CTRL_TYPE_STRING;
    if (!set) {
        if (found->script.flags & V4L2_CTRL_FLAG_WRITE_ONLY)
            return EACCES;
        if (isText && one.size <= found->text.size())
            return ENOSPC;
        if (isText)
            std::memcpy(one.string, found->text.c_str(), found->text.size() + 1);
        else if (isLarge(found->script))
            one.value64 = found->value;
        else
            one.value = static_cast<int32_t>(found->value);
        return 0;
    }
    const int64_t value = isText ? 0 : isLarge(found->script) ? one.value64 : one.value;
    if (const int error = isText ? 0 : check(*found, value))
        return error;
    if (!keep)
        return 0;
    if (!device_.takesHeldControls && (flagsOf(*found) & V4L2_CTRL_FLAG_INACTIVE))
        return EIO;
    become(*found, value, isText ? one.string : std::string());
    return 0;
}

int Driver::value(v4l2_control& one, bool set) {
    ControlState* const found = control(one.id);
    if (!found || isLarge(found->script))
        return EINVAL;
    if (!set) {
        if (found->script.flags & V4L2_CTRL_FLAG_WRITE_ONLY)
            return EACCES;
        one.value = static_cast<int32_t>(found->value);
        return 0;
    }
    if (const int error = check(*found, one.value))
        return error;
    if (!device_.takesHeldControls && (flagsOf(*found) & V4L2_CTRL_FLAG_INACTIVE))
        return EIO;
    become(*found, one.value, std::string());
    return 0;
}

int Driver::check(const ControlState& one, int64_t value) {
    if (one.script.flags & V4L2_CTRL_FLAG_READ_ONLY)
        return EACCES;
    if (one.script.flags & V4L2_CTRL_FLAG_GRABBED)
        return EBUSY;
    if (one.script.type == V4L2_CTRL_TYPE_BUTTON || one.script.type == V4L2_CTRL_TYPE_BITMASK)
        return 0;
    return value < one.script.minimum || value > one.script.maximum ? ERANGE : 0;
}

// Tells who wants to know: also of those that it holds or releases.
void Driver::become(ControlState& changed, int64_t value, const std::string& text) {
    if (changed.value == value && changed.text == text && changed.script.type != V4L2_CTRL_TYPE_BUTTON)
        return;
    changed.value = value;
    changed.text = text;
    for (const ControlState& one : controls_) {
        if (&one != &changed && one.script.heldBy != changed.script.id)
            continue;
        v4l2_event event = {};
        event.type = V4L2_EVENT_CTRL;
        event.id = one.script.id;
        event.u.ctrl.changes = &one == &changed ? V4L2_EVENT_CTRL_CH_VALUE : V4L2_EVENT_CTRL_CH_FLAGS;
        for (auto& handle : handles_)
            if (handle.second.wantsControls.count(event.id))
                handle.second.told.push_back(event);
    }
    rearm();
}

} // namespace ostrel::support
