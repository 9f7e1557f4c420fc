#include "platform/cameras/v4l2/node_watch.h"

#include "platform/cameras/descriptor_set.h"
#include "platform/cameras/folder_events.h"
#include "platform/cameras/ticker.h"
#include "platform/cameras/v4l2/udev.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

const char* const LOOPBACKS = "/sys/devices/virtual/video4linux";
const char* const UDEV_RUNS = "/run/udev/control";

// Whether the kernel itself makes the nodes in the folder.
bool isFilledByKernel(const std::string& folder) {
    struct stat file = {};
    if (::stat(folder.c_str(), &file) != 0)
        return false;
    const std::string device = std::to_string(major(file.st_dev)) + ':' + std::to_string(minor(file.st_dev));
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        // "24 27 0:6 / /dev rw,relatime - devtmpfs devtmpfs rw": of some fields there may be any number.
        std::istringstream fields(line);
        std::string number, parent, mounted;
        fields >> number >> parent >> mounted;
        if (mounted == device)
            return line.find(" - devtmpfs ") != std::string::npos;
    }
    return false;
}

// What udev says once its rules have run.
class UdevMessages {
public:
    UdevMessages()
        : context_(udev_new()),
          monitor_(context_ ? udev_monitor_new_from_netlink(context_.get(), "udev") : nullptr) {
        if (monitor_ &&
            (udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), "video4linux", nullptr) < 0 ||
             udev_monitor_enable_receiving(monitor_.get()) < 0))
            monitor_.reset();
    }

    int descriptor() const { return monitor_ ? udev_monitor_get_fd(monitor_.get()) : -1; }

    // Where more came than the socket holds, the first call in vain says so and the next ones go on.
    bool changed() {
        bool any = false;
        if (!monitor_)
            return any;
        do {
            errno = 0;
            while (const Device device{udev_monitor_receive_device(monitor_.get())})
                any = true;
            any = any || errno == ENOBUFS;
        } while (errno == ENOBUFS);
        return any;
    }

private:
    const Udev context_;
    UdevMonitor monitor_;
};

bool isVideoNode(const char* name) {
    return std::strncmp(name, "video", 5) == 0;
}

class NodeWatch : public ChangeWatch {
public:
    explicit NodeWatch(const NodeSources& sources)
        : sources_(sources), inotify_(sources.folder, isVideoNode) {
        complete_ = set_.add(looks_.descriptor());
        complete_ = (set_.add(inotify_.descriptor()) || !inotify_.watches()) && complete_;
        set_.add(udev_.descriptor());
        lookWhereNobodyTells();
    }

    int descriptor() const override { return complete_ ? set_.descriptor() : -1; }

    bool changed() override {
        bool any = inotify_.changed();
        any = udev_.changed() || any;
        any = looks_.clear() || any;
        lookWhereNobodyTells();
        return any;
    }

private:
    void lookWhereNobodyTells() {
        looks_.switchOn(!sources_.tellAll || !inotify_.watches() ||
                        ::access(sources_.loopbacks.c_str(), F_OK) == 0);
    }

    const NodeSources sources_;
    FolderEvents inotify_;
    UdevMessages udev_;
    Ticker looks_;
    DescriptorSet set_; // after what is in it
    bool complete_ = false;
};

} // namespace

std::unique_ptr<ChangeWatch> watchNodes(const std::string& folder) {
    NodeSources sources;
    sources.folder = folder;
    sources.tellAll = ::access(UDEV_RUNS, F_OK) == 0 && isFilledByKernel(folder);
    sources.loopbacks = LOOPBACKS;
    return watchNodes(sources);
}

std::unique_ptr<ChangeWatch> watchNodes(const NodeSources& sources) {
    return std::make_unique<NodeWatch>(sources);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
