// A camera's start in the best of its modes that it does not refuse.
#ifndef OSTREL_PLATFORM_CAMERAS_START_ATTEMPTS_H
#define OSTREL_PLATFORM_CAMERAS_START_ATTEMPTS_H

#include "platform/cameras/error.h"
#include "platform/cameras/format_choice.h"

#include <functional>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// 0, or the errno of what failed, with `step` set to its name; nothing is held then.
using Attempt = std::function<int(const Candidate& candidate, std::string& step)>;

// Tries one candidate after the other for as long as another may fare better; there is at least one. The
// error names all that were tried. `isGone`: asked whether the camera has left the machine.
Error startFirst(const std::string& where, const std::vector<Candidate>& candidates, const Attempt& attempt,
                 const std::function<bool()>& isGone);

} // namespace cameras
} // namespace ostrel

#endif
