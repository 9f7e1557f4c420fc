// Reading and setting, by the call for several controls where the driver has it, else one by one.
#include "platform/cameras/v4l2/control_calls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

const int64_t LONGEST_TEXT = 1 << 16;

bool isText(const Control& control) {
    return control.type == Control::Type::Text;
}

// Only the newer call has room for it.
bool isLarge(const Control& control) {
    return isText(control) || control.type == Control::Type::Integer64;
}

bool isReadable(const Control& control) {
    return !control.writeOnly && control.type != Control::Type::Button;
}

int64_t widened(const Control& control, int32_t value) {
    return control.type == Control::Type::Bitmask ? static_cast<int64_t>(static_cast<uint32_t>(value))
                                                  : static_cast<int64_t>(value);
}

// The kernel's structures for some controls, with the memory that their texts need.
class Values {
public:
    explicit Values(const std::vector<const Control*>& controls) {
        values_.resize(controls.size());
        texts_.resize(controls.size());
        for (size_t i = 0; i < controls.size(); ++i)
            fill(*controls[i], values_[i], texts_[i]);
    }

    // `culprit` is the number of the control that was refused; as many as there are when none is named.
    int call(const VideoNode& node, unsigned long request, uint32_t which, size_t& culprit) {
        v4l2_ext_controls all = {};
        all.which = which;
        all.count = static_cast<uint32_t>(values_.size());
        all.error_idx = all.count;
        all.controls = values_.data();
        const int error = node.ioctl(request, &all);
        culprit = std::min<size_t>(all.error_idx, values_.size());
        return error;
    }

    void read(size_t number, Control& control) const {
        const v4l2_ext_control& value = values_[number];
        if (isText(control))
            control.text.assign(texts_[number].data(),
                                ::strnlen(texts_[number].data(), texts_[number].size()));
        else if (isLarge(control))
            control.value = value.value64;
        else
            control.value = widened(control, value.value);
        control.hasValue = true;
    }

private:
    static void fill(const Control& control, v4l2_ext_control& value, std::vector<char>& text) {
        value = {};
        value.id = control.id;
        if (isText(control)) {
            const int64_t room = std::max<int64_t>(0, std::min(control.maximum, LONGEST_TEXT));
            text.assign(std::max(static_cast<size_t>(room), control.text.size()) + 1, '\0');
            std::copy(control.text.begin(), control.text.end(), text.begin());
            value.size = static_cast<uint32_t>(text.size());
            value.string = text.data();
        } else if (isLarge(control)) {
            value.value64 = control.value;
        } else {
            value.value = static_cast<int32_t>(control.value);
        }
    }

    std::vector<v4l2_ext_control> values_;
    std::vector<std::vector<char>> texts_;
};

// The older drivers know the newer call for the controls of one class only.
uint32_t classOf(const Control& control) {
    return V4L2_CTRL_ID2WHICH(control.id);
}

int readOne(const VideoNode& node, Control& control) {
    if (isLarge(control)) {
        const std::vector<const Control*> alone{&control};
        Values value(alone);
        size_t culprit = 0;
        const int error = value.call(node, VIDIOC_G_EXT_CTRLS, classOf(control), culprit);
        if (!error)
            value.read(0, control);
        return error;
    }
    v4l2_control value = {};
    value.id = control.id;
    const int error = node.ioctl(VIDIOC_G_CTRL, &value);
    if (!error) {
        control.value = widened(control, value.value);
        control.hasValue = true;
    }
    return error;
}

int setOne(const VideoNode& node, const Control& control) {
    if (isLarge(control)) {
        const std::vector<const Control*> alone{&control};
        size_t culprit = 0;
        return Values(alone).call(node, VIDIOC_S_EXT_CTRLS, classOf(control), culprit);
    }
    v4l2_control value = {};
    value.id = control.id;
    value.value = static_cast<int32_t>(control.value);
    return node.ioctl(VIDIOC_S_CTRL, &value);
}

int setOneByOne(const VideoNode& node, const std::vector<Control>& wanted, const Control*& culprit) {
    for (const Control& control : wanted)
        if (const int error = setOne(node, control)) {
            culprit = &control;
            return error;
        }
    return 0;
}

} // namespace

int readValues(const VideoNode& node, std::vector<Control>& controls) {
    std::vector<Control*> readable;
    for (Control& control : controls) {
        control.hasValue = false;
        if (isReadable(control))
            readable.push_back(&control);
    }
    if (readable.empty())
        return 0;
    const std::vector<const Control*> asked(readable.begin(), readable.end());
    Values values(asked);
    size_t culprit = 0;
    const int refused = values.call(node, VIDIOC_G_EXT_CTRLS, V4L2_CTRL_WHICH_CUR_VAL, culprit);
    for (size_t i = 0; i < readable.size(); ++i) {
        if (!refused)
            values.read(i, *readable[i]);
        else if (readOne(node, *readable[i]) == ENODEV) // else it has no value, the others may
            return ENODEV;
    }
    return 0;
}

int setValues(const VideoNode& node, const std::vector<Control>& wanted, const Control*& culprit) {
    culprit = wanted.size() == 1 ? &wanted.front() : nullptr;
    std::vector<const Control*> all;
    for (const Control& control : wanted)
        all.push_back(&control);
    size_t number = 0;
    const int error = Values(all).call(node, VIDIOC_S_EXT_CTRLS, V4L2_CTRL_WHICH_CUR_VAL, number);
    if (!error)
        return 0;
    // When nothing was set the driver names none; asked whether it would, it does.
    if (number == all.size() && error != ENOTTY)
        if (Values(all).call(node, VIDIOC_TRY_EXT_CTRLS, V4L2_CTRL_WHICH_CUR_VAL, number) == 0)
            number = all.size();
    if (number < all.size()) {
        culprit = all[number];
        return error;
    }
    return error == ENOTTY || error == EINVAL ? setOneByOne(node, wanted, culprit) : error;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
