// The list of cameras as text.
#ifndef OSTREL_APPS_CAMERA_CAMERA_LIST_H
#define OSTREL_APPS_CAMERA_CAMERA_LIST_H

#include "apps/camera/camera_choice.h"

#include <string>
#include <vector>

namespace ostrel::apps::cli {

// Aligned columns under a heading, one line a camera.
std::string cameraTable(const std::vector<Camera>& cameras);

// Each with its modes, which the library asks of cameras that are not in use.
std::string cameraModes(const std::vector<Camera>& cameras);

// [{"id": ..., "name": ..., "formats": [{"width": ..., "height": ...}], "device": {"kind": ..., "node": ...,
// "driver": ..., "bus": ..., "vendor": "046d", "product": ..., "serial": ...}, "modes": [as modeJson()]}],
// ending with a line break. What is not known of a device is left out.
std::string cameraJson(const std::vector<Camera>& cameras);

// A video node that is no camera, or against whose use something stands.
struct OtherNode {
    std::string path;
    std::string name;
    std::string reason;
};

std::vector<OtherNode> otherNodes(); // of this machine, by number

// As above; empty without nodes.
std::string nodeTable(const std::vector<OtherNode>& nodes);
// {"cameras": [as cameraJson()], "others": [{"path": ..., "name": ..., "reason": ...}]}
std::string allJson(const std::vector<Camera>& cameras, const std::vector<OtherNode>& nodes);

} // namespace ostrel::apps::cli

#endif
