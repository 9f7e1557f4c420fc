// libudev reads sysfs by itself, so a machine without a running udev loses only what udev's rules add.
#include "platform/cameras/v4l2/discovery.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <libudev.h>
#include <set>
#include <sys/stat.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

template <typename Object, Object* (*Unref)(Object*)>
struct Unreference {
    void operator()(Object* object) const { Unref(object); }
};
using Udev = std::unique_ptr<udev, Unreference<udev, udev_unref>>;
using Enumerate = std::unique_ptr<udev_enumerate, Unreference<udev_enumerate, udev_enumerate_unref>>;
using Device = std::unique_ptr<udev_device, Unreference<udev_device, udev_device_unref>>;

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

std::string baseName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::string incarnationOf(const std::string& path) {
    struct stat node = {};
    if (::stat(path.c_str(), &node) != 0 || !S_ISCHR(node.st_mode))
        return std::string();
    // sysfs gives each new device a new inode; /dev in a container may keep an old one.
    struct stat device = {};
    ::stat(("/sys/class/video4linux/" + baseName(path)).c_str(), &device);
    return std::to_string(node.st_rdev) + ':' + std::to_string(node.st_ino) + ':' +
           std::to_string(device.st_ino);
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

NodeFacts factsOf(udev_device* node) {
    NodeFacts facts;
    facts.path = text(udev_device_get_devnode(node));
    facts.incarnation = incarnationOf(facts.path);
    const char* capabilities = udev_device_get_property_value(node, "ID_V4L_CAPABILITIES");
    facts.described = capabilities != nullptr;
    facts.capabilities = text(capabilities);
    const std::string sysfs = text(udev_device_get_syspath(node));
    facts.isVirtual = sysfs.find("/devices/virtual/") != std::string::npos;
    facts.port = portOfSysfsPath(sysfs);
    facts.index = std::atoi(text(udev_device_get_sysattr_value(node, "index")).c_str());
    facts.name = text(udev_device_get_property_value(node, "ID_V4L_PRODUCT"));
    if (facts.name.empty())
        facts.name = text(udev_device_get_sysattr_value(node, "name"));
    readUsb(node, facts);
    if (udev_device* parent = udev_device_get_parent(node))
        facts.driver = text(udev_device_get_driver(parent));
    return facts;
}

std::vector<NodeFacts> udevNodes() {
    std::vector<NodeFacts> result;
    // One context for each listing: libudev's are bound to one thread.
    const Udev context(udev_new());
    const Enumerate list(context ? udev_enumerate_new(context.get()) : nullptr);
    if (!list)
        return result;
    udev_enumerate_add_match_subsystem(list.get(), "video4linux");
    udev_enumerate_scan_devices(list.get());
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
        const char* sysfs = udev_list_entry_get_name(entry);
        if (numberOf(baseName(sysfs)) < 0)
            continue;
        const Device device(udev_device_new_from_syspath(context.get(), sysfs));
        if (!device)
            continue; // unplugged meanwhile
        NodeFacts facts = factsOf(device.get());
        if (!facts.incarnation.empty())
            result.push_back(std::move(facts));
    }
    return result;
}

// What was put into /dev by hand, or into a container without its sysfs.
void addUnknownNodes(std::vector<NodeFacts>& nodes) {
    std::set<std::string> known;
    for (const NodeFacts& facts : nodes)
        known.insert(facts.path);
    std::error_code unreadable; // then there is nothing to add
    std::filesystem::directory_iterator entry("/dev", unreadable);
    for (; entry != std::filesystem::directory_iterator(); entry.increment(unreadable)) {
        NodeFacts facts;
        facts.path = entry->path().string();
        if (numberOf(baseName(facts.path)) < 0 || known.count(facts.path))
            continue;
        facts.incarnation = incarnationOf(facts.path);
        if (!facts.incarnation.empty())
            nodes.push_back(std::move(facts));
    }
}

class SystemDiscovery : public Discovery {
public:
    std::vector<NodeFacts> nodes() override {
        std::vector<NodeFacts> result = udevNodes();
        addUnknownNodes(result);
        std::sort(result.begin(), result.end(), [](const NodeFacts& a, const NodeFacts& b) {
            return numberOf(baseName(a.path)) < numberOf(baseName(b.path));
        });
        return result;
    }
    std::string incarnation(const std::string& path) override { return incarnationOf(path); }
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

std::unique_ptr<Discovery> makeDiscovery() {
    return std::make_unique<SystemDiscovery>();
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
