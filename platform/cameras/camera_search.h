// Which camera a text means that people have saved or typed.
#ifndef OSTREL_PLATFORM_CAMERAS_CAMERA_SEARCH_H
#define OSTREL_PLATFORM_CAMERAS_CAMERA_SEARCH_H

#include "platform/cameras/node_report.h"

#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

struct NamedCamera {
    std::string identifier, name;
};

struct FoundCamera {
    std::string identifier; // empty when none or several fit
    std::string why;        // then the reason, for people
};

// The rules are those of ostrel/device_id.h. Asks the system only where a path leads.
FoundCamera findCamera(const std::string& text, const std::vector<NamedCamera>& cameras,
                       const std::vector<NodeReport>& nodes);

} // namespace cameras
} // namespace ostrel

#endif
