#include "platform/cameras/control_rules.h"

#include "platform/cameras/control_ids.h"
#include "platform/cameras/messages.h"

#include <algorithm>
#include <cerrno>

namespace ostrel {
namespace cameras {

namespace {

// Drivers say that a control is inactive, but not which other one has the say.
struct Pair {
    uint32_t held, automatic;
    int64_t released[2]; // the values of the automatic one that leave the other to the user
};

const Pair PAIRS[] = {
    {controlid::EXPOSURE_ABSOLUTE, controlid::EXPOSURE_AUTO, {1, 2}},
    {controlid::EXPOSURE, controlid::EXPOSURE_AUTO, {1, 2}},
    {controlid::IRIS_ABSOLUTE, controlid::EXPOSURE_AUTO, {1, 3}},
    {controlid::GAIN, controlid::AUTOGAIN, {0, 0}},
    {controlid::GAIN, controlid::EXPOSURE_AUTO, {1, 1}},
    {controlid::EXPOSURE, controlid::AUTOGAIN, {0, 0}},
    {controlid::WHITE_BALANCE_TEMPERATURE, controlid::AUTO_WHITE_BALANCE, {0, 0}},
    {controlid::RED_BALANCE, controlid::AUTO_WHITE_BALANCE, {0, 0}},
    {controlid::BLUE_BALANCE, controlid::AUTO_WHITE_BALANCE, {0, 0}},
    {controlid::WHITE_BALANCE_TEMPERATURE, controlid::PRESET_WHITE_BALANCE, {0, 0}},
    {controlid::RED_BALANCE, controlid::PRESET_WHITE_BALANCE, {0, 0}},
    {controlid::BLUE_BALANCE, controlid::PRESET_WHITE_BALANCE, {0, 0}},
    {controlid::FOCUS_ABSOLUTE, controlid::FOCUS_AUTO, {0, 0}},
    {controlid::HUE, controlid::HUE_AUTO, {0, 0}},
    {controlid::BRIGHTNESS, controlid::AUTOBRIGHTNESS, {0, 0}},
    {controlid::CHROMA_GAIN, controlid::CHROMA_AGC, {0, 0}},
    {controlid::ISO_SENSITIVITY, controlid::ISO_SENSITIVITY_AUTO, {0, 0}},
};

bool releases(const Pair& pair, int64_t value) {
    return value == pair.released[0] || value == pair.released[1];
}

const Control* find(const std::vector<Control>& controls, uint32_t id) {
    const auto found =
        std::find_if(controls.begin(), controls.end(), [id](const Control& one) { return one.id == id; });
    return found == controls.end() ? nullptr : &*found;
}

bool isMenu(const Control& control) {
    return control.type == Control::Type::Menu || control.type == Control::Type::IntegerMenu;
}

// Whether the control takes the value, as far as it can be told from here.
bool takes(const Control& control, const Setting& asked) {
    if (control.type == Control::Type::Button)
        return true;
    if (control.type == Control::Type::Text) {
        const auto length = static_cast<int64_t>(asked.text.size());
        return length >= control.minimum && length <= control.maximum;
    }
    if (control.type == Control::Type::Bitmask)
        return (asked.value & ~control.maximum) == 0;
    if (isMenu(control) && !control.items.count(static_cast<int>(asked.value)))
        return false;
    return asked.value >= control.minimum && asked.value <= control.maximum;
}

// Who has the say over a control, once all that was asked for is set.
class Say {
public:
    Say(const std::vector<Control>& present, const std::vector<Setting>& asked)
        : present_(present), asked_(asked) {}

    // Empty when the control may be set. One automatic that lets go is enough: it is the driver that knows
    // whether another one has a say as well.
    Error refusal(const std::string& where, const Control& control) {
        if (!control.inactive)
            return Error();
        const Control* holder = nullptr;
        bool released = false;
        for (const Pair& pair : PAIRS) {
            const Control* const automatic =
                pair.held == control.id ? find(present_, pair.automatic) : nullptr;
            if (!automatic || releases(pair, automatic->value))
                continue;
            const Setting* const now = askedFor(automatic->id);
            if (now && releases(pair, now->value)) {
                released = true;
                releasing_.push_back(automatic->id);
            } else if (!holder) {
                holder = automatic;
            }
        }
        return released ? Error() : controlHeld(where, control, holder);
    }

    bool isReleasing(uint32_t id) const {
        return std::find(releasing_.begin(), releasing_.end(), id) != releasing_.end();
    }

private:
    const Setting* askedFor(uint32_t id) const {
        for (const Setting& one : asked_)
            if (one.id == id)
                return &one;
        return nullptr;
    }

    const std::vector<Control>& present_;
    const std::vector<Setting>& asked_;
    std::vector<uint32_t> releasing_;
};

// Of what was to be set, that which has its new value now and had another before.
std::vector<std::string> setAllTheSame(Controls& controls, const std::vector<Control>& before,
                                       const std::vector<Setting>& asked) {
    std::vector<std::string> names;
    std::vector<Control> now;
    if (controls.list(now))
        return names;
    for (const Setting& one : asked) {
        const Control* const old = find(before, one.id);
        const Control* const fresh = find(now, one.id);
        if (old && fresh && fresh->hasValue && (old->value != fresh->value || old->text != fresh->text) &&
            fresh->value == one.value && fresh->text == one.text)
            names.push_back(fresh->name);
    }
    return names;
}

// Of what was set to release others, what it was before.
std::vector<Control> asBefore(const std::vector<Control>& releasing, const std::vector<Control>& before) {
    std::vector<Control> result;
    for (const Control& one : releasing)
        result.push_back(*find(before, one.id));
    return result;
}

} // namespace

void findAutomatic(std::vector<Control>& controls) {
    for (Control& control : controls)
        for (const Pair& pair : PAIRS) {
            const Control* const automatic =
                pair.held == control.id ? find(controls, pair.automatic) : nullptr;
            const bool hasTheSay = automatic && control.inactive && !releases(pair, automatic->value);
            if (hasTheSay || (automatic && !control.automatic))
                control.automatic = automatic->id;
            if (hasTheSay)
                break;
        }
}

Error plan(const std::string& where, const std::vector<Control>& present, const std::vector<Setting>& asked,
           ControlPlan& result) {
    Say say(present, asked);
    std::vector<Control> wanted;
    for (const Setting& one : asked) {
        const Control* const control = find(present, one.id);
        if (!control)
            return noSuchControl(where, one.id);
        if (find(wanted, one.id))
            return controlAskedTwice(where, *control);
        if (control->readOnly)
            return controlRefused(where, *control, EACCES);
        if (!takes(*control, one))
            return controlOutOfRange(where, *control);
        if (const Error held = say.refusal(where, *control))
            return held;
        wanted.push_back(*control);
        wanted.back().value = one.value;
        wanted.back().text = one.text;
    }
    for (Control& one : wanted)
        (say.isReleasing(one.id) ? result.releasing : result.rest).push_back(std::move(one));
    return Error();
}

// Two steps where one control releases another: hardware may refuse the second, or forget it, while the first
// still has the say, and drivers set them in an order of their own.
Error setControls(Controls& controls, const std::vector<Setting>& asked) {
    if (asked.empty())
        return Error();
    std::vector<Control> before;
    if (const Error why = controls.list(before))
        return why;
    ControlPlan steps;
    if (const Error why = plan(controls.where(), before, asked, steps))
        return why;
    Error why = steps.releasing.empty() ? Error() : controls.set(steps.releasing);
    if (!why && !steps.rest.empty()) {
        why = controls.set(steps.rest);
        if (why && !steps.releasing.empty())
            controls.set(asBefore(steps.releasing, before));
    }
    return why ? controlsHalfSet(why, setAllTheSame(controls, before, asked)) : Error();
}

} // namespace cameras
} // namespace ostrel
