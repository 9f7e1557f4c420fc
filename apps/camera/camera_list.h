// The list of cameras as text.
#ifndef OSTREL_APPS_CAMERA_CAMERA_LIST_H
#define OSTREL_APPS_CAMERA_CAMERA_LIST_H

#include "apps/camera/camera_choice.h"

#include <string>
#include <vector>

namespace ostrel::apps::cli {

// Aligned columns under a heading, one line a camera.
std::string cameraTable(const std::vector<Camera>& cameras);

// [{"id": ..., "name": ..., "formats": [{"width": ..., "height": ...}]}], ending with a line break.
std::string cameraJson(const std::vector<Camera>& cameras);

} // namespace ostrel::apps::cli

#endif
