// Notices that video nodes come, go, or may be opened now.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_NODE_WATCH_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_NODE_WATCH_H

#include "platform/cameras/change_watch.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Of the nodes in a folder. Three sources, of which it takes all that there are:
//  - inotify on the folder: nodes made, removed and renamed; new owners, modes and access lists;
//  - udev, which tells once it knows all about a device and has set the node's permissions. In a container
//  its
//    messages do not arrive;
//  - a look once a second, where something may change of which neither tells: in a folder that the kernel
//    does not fill, a container's own, a node stays when its device has left. While udev is not there nobody
//    says when a driver that has just made its node is ready to answer. A loopback device becomes a camera
//    when some program begins to feed it.
std::unique_ptr<ChangeWatch> watchNodes(const std::string& folder);

// The same, told what the machine is like.
struct NodeSources {
    std::string folder;
    bool tellAll = false;  // no look is needed but for loopback devices
    std::string loopbacks; // exists while there are any
};
std::unique_ptr<ChangeWatch> watchNodes(const NodeSources& sources);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
