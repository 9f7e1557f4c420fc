// What may be set, in which order, and what is said where it may not.
#ifndef OSTREL_PLATFORM_CAMERAS_CONTROL_RULES_H
#define OSTREL_PLATFORM_CAMERAS_CONTROL_RULES_H

#include "platform/cameras/controls.h"

#include <vector>

namespace ostrel {
namespace cameras {

// Fills in which automatic control may have the say over each.
void findAutomatic(std::vector<Control>& controls);

struct Setting {
    uint32_t id = 0;
    int64_t value = 0;
    std::string text;
};

// Sets all, or says why not and which were set all the same. A control that is inactive is refused unless the
// same call takes the say from the automatic one that has it; nothing is switched off or on besides.
Error setControls(Controls& controls, const std::vector<Setting>& asked);

// What setControls() does first: the controls with the values that they are asked for. Those of `releasing`
// have to be set before those of `rest`, of which some are inactive until then.
struct ControlPlan {
    std::vector<Control> releasing, rest;
};
Error plan(const std::string& where, const std::vector<Control>& present, const std::vector<Setting>& asked,
           ControlPlan& result);

} // namespace cameras
} // namespace ostrel

#endif
