// libudev reads sysfs by itself, so a machine without a running udev loses only what udev's rules add.
#include "platform/cameras/v4l2/discovery.h"

#include "platform/cameras/v4l2/node_watch.h"
#include "platform/cameras/v4l2/udev.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <map>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

std::string text(const char* chars) {
    return chars ? chars : "";
}

// The number in "video7", -1 for every other name.
int numberOf(const std::string& name) {
    static const std::string prefix = "video";
    if (name.compare(0, prefix.size(), prefix) != 0 || name.size() == prefix.size() || name.size() > 14)
        return -1;
    if (!std::all_of(name.begin() + static_cast<ptrdiff_t>(prefix.size()), name.end(),
                     [](char c) { return c >= '0' && c <= '9'; }))
        return -1;
    return std::atoi(name.c_str() + prefix.size());
}

// Nothing where the path leads to no device.
bool deviceAt(const std::string& path, struct stat& node) {
    return ::stat(path.c_str(), &node) == 0 && S_ISCHR(node.st_mode);
}

// sysfs gives each new device a new inode, while /dev in a container may keep an old one.
std::string generationOf(const struct stat& node) {
    const std::string number =
        std::to_string(major(node.st_rdev)) + ':' + std::to_string(minor(node.st_rdev));
    struct stat device = {};
    if (::stat(("/sys/dev/char/" + number).c_str(), &device) == 0)
        return number + '@' + std::to_string(device.st_ino);
    return number + '/' + std::to_string(node.st_ino); // no sysfs here, or the device has left
}

void readUsb(udev_device* node, NodeFacts& facts) {
    udev_device* usb = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_device");
    if (!usb)
        return;
    facts.isUsb = true;
    facts.model = text(udev_device_get_sysattr_value(usb, "idVendor")) + ':' +
                  text(udev_device_get_sysattr_value(usb, "idProduct"));
    facts.serial = text(udev_device_get_sysattr_value(usb, "serial"));
    udev_device* part = udev_device_get_parent_with_subsystem_devtype(node, "usb", "usb_interface");
    if (part)
        facts.interface = text(udev_device_get_sysattr_value(part, "bInterfaceNumber"));
}

// "0x14f1" without the mark of its base.
std::string number(const char* attribute) {
    const std::string digits = text(attribute);
    return digits.compare(0, 2, "0x") == 0 ? digits.substr(2) : digits;
}

void readParent(udev_device* parent, NodeFacts& facts) {
    facts.driver = text(udev_device_get_driver(parent));
    const std::string subsystem = text(udev_device_get_subsystem(parent));
    const std::string name = text(udev_device_get_sysname(parent));
    if (subsystem == "pci") {
        facts.bus = "PCI:" + name;
        facts.model = number(udev_device_get_sysattr_value(parent, "vendor")) + ':' +
                      number(udev_device_get_sysattr_value(parent, "device"));
    } else if (subsystem == "platform") {
        facts.bus = "platform:" + name;
    }
}

// What sysfs, and udev where it runs, know of a device.
void readDevice(udev_device* node, NodeFacts& facts) {
    const char* capabilities = udev_device_get_property_value(node, "ID_V4L_CAPABILITIES");
    facts.described = capabilities != nullptr;
    facts.capabilities = text(capabilities);
    const std::string sysfs = text(udev_device_get_syspath(node));
    facts.isVirtual = sysfs.find("/devices/virtual/") != std::string::npos;
    // v4l2loopback shows the format that it is fed with, and nothing while it is not.
    const char* format = udev_device_get_sysattr_value(node, "format");
    facts.isUnfed = facts.isVirtual && format && !*format;
    facts.port = portOfSysfsPath(sysfs);
    facts.index = std::atoi(text(udev_device_get_sysattr_value(node, "index")).c_str());
    facts.name = text(udev_device_get_property_value(node, "ID_V4L_PRODUCT"));
    if (facts.name.empty())
        facts.name = text(udev_device_get_sysattr_value(node, "name"));
    if (udev_device* parent = udev_device_get_parent(node))
        readParent(parent, facts);
    readUsb(node, facts);
}

// The files with the names of video nodes, by their numbers.
std::map<int, std::string> nodesIn(const std::string& folder) {
    std::map<int, std::string> paths;
    // Not the standard library's iterator: without memory that ends the program.
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), ::closedir);
    while (const dirent* entry = entries ? ::readdir(entries.get()) : nullptr)
        if (numberOf(entry->d_name) >= 0)
            paths[numberOf(entry->d_name)] = folder + '/' + entry->d_name;
    return paths;
}

class SystemDiscovery : public Discovery {
public:
    explicit SystemDiscovery(const std::string& folder) : folder_(folder) {}

    std::vector<NodeFacts> nodes() override {
        std::vector<NodeFacts> result;
        std::set<dev_t> found;
        // One context for each listing: libudev's are bound to one thread.
        const Udev context(udev_new());
        for (const auto& numbered : nodesIn(folder_)) {
            struct stat node = {};
            if (!deviceAt(numbered.second, node) || !found.insert(node.st_rdev).second)
                continue;
            NodeFacts facts;
            facts.path = numbered.second;
            facts.device = node.st_rdev;
            facts.generation = generationOf(node);
            const Device device(context ? udev_device_new_from_devnum(context.get(), 'c', node.st_rdev)
                                        : nullptr);
            if (device)
                readDevice(device.get(), facts);
            result.push_back(std::move(facts));
        }
        return result;
    }

    std::string generation(const std::string& path) override {
        struct stat node = {};
        return deviceAt(path, node) ? generationOf(node) : std::string();
    }

    bool mayBeOpened(const std::string& path) override {
        // access() asks for the real user, who is not the one that a set-user-ID program opens it as.
        return ::getuid() != ::geteuid() || ::access(path.c_str(), R_OK | W_OK) == 0;
    }

    std::unique_ptr<ChangeWatch> watch() override { return watchNodes(folder_); }

private:
    const std::string folder_;
};

bool isUsbRoot(const std::string& part) {
    return part.size() > 3 && part.compare(0, 3, "usb") == 0 &&
           std::isdigit(static_cast<unsigned char>(part[3]));
}

std::vector<std::string> split(const std::string& path) {
    std::vector<std::string> parts;
    for (size_t at = 0; at < path.size();) {
        const size_t end = std::min(path.find('/', at), path.size());
        if (end > at)
            parts.push_back(path.substr(at, end - at));
        at = end + 1;
    }
    return parts;
}

} // namespace

std::unique_ptr<Discovery> makeDiscovery(const std::string& folder) {
    return std::make_unique<SystemDiscovery>(folder);
}

std::string portOfSysfsPath(const std::string& path) {
    const std::vector<std::string> parts = split(path);
    const auto end = std::find(parts.begin(), parts.end(), "video4linux");
    const auto root = std::find_if(parts.begin(), end, isUsbRoot);
    if (root != end && root != parts.begin()) {
        // ".../0000:00:14.0/usb1/1-3/1-3.2/1-3.2:1.0": the controller and the chain of ports, 3.2; the bus
        // number 1 may be another one after the next start.
        auto device = root;
        for (auto it = root + 1; it != end && it->find(':') == std::string::npos; ++it)
            device = it;
        const size_t dash = device->find('-');
        if (device != root && dash != std::string::npos)
            return *(root - 1) + "-usb-" + device->substr(dash + 1);
    }
    // A virtual device has no place of its own: its parent is "virtual".
    if (end == parts.begin() || end == parts.end() || *(end - 1) == "virtual")
        return std::string();
    return *(end - 1);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
