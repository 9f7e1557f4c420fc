// Camera device files that exist but that this user may not open.
#ifndef OSTREL_APPS_CAMERA_VIDEO_NODES_H
#define OSTREL_APPS_CAMERA_VIDEO_NODES_H

#include <functional>
#include <string>
#include <vector>

namespace ostrel::apps::cli {

struct ClosedNode {
    std::string path;
    std::string group; // whose members may open it; empty when no group may
};

using MayOpen = std::function<bool(const std::string& path)>;

// The nodes named videoN in the directory that mayOpen denies, by number.
std::vector<ClosedNode> closedVideoNodes(const std::string& directory, const MayOpen& mayOpen);
std::vector<ClosedNode> closedVideoNodes(); // of this machine, for this user

// The group whose members may open the file, by name or, where it has none, by number; empty when none may.
std::string groupOf(const std::string& path);

// "no permission to use /dev/video0, /dev/video1: ask ...". nodes must not be empty.
std::string permissionAdvice(const std::vector<ClosedNode>& nodes);

} // namespace ostrel::apps::cli

#endif
