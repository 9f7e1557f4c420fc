// Which video nodes the machine has, and what can be known of them without opening them.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_DISCOVERY_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_DISCOVERY_H

#include "platform/cameras/change_watch.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Facts that are not known are empty. Texts are bytes as the system gives them.
struct NodeFacts {
    std::string path;       // "/dev/video0"
    std::string generation; // another one after each re-plug; the same by every path to the device
    uint64_t device = 0;    // its number
    // What udev's own look at the node found, ":capture:"; meaningful when `described`.
    bool described = false;
    std::string capabilities;
    bool isUsb = false;     // what it can do never changes
    bool isVirtual = false; // no hardware: what it can do may change at any time
    bool isUnfed = false;   // a loopback device to which no program gives pictures at present
    std::string model;      // "046d:0825", of USB and PCI devices
    std::string serial;     // of the device, often the same for all of a model
    std::string port;       // where it is plugged in
    std::string bus;        // the same for other hardware, as most drivers call it: "PCI:0000:03:00.0"
    std::string interface;  // part of the device, "00"
    int index = 0;          // among the nodes of one interface
    std::string name;
    std::string driver;
};

// Thread-safe.
class Discovery {
public:
    virtual ~Discovery() = default;
    // In the order of the nodes' numbers, each device once.
    virtual std::vector<NodeFacts> nodes() = 0;
    // What `generation` of the device would be now to which the path leads; empty when there is none.
    virtual std::string generation(const std::string& path) = 0;
    // Whether the permissions of the path let this process open it. Does not wake the device.
    virtual bool mayBeOpened(const std::string& path) = 0;
    // Tells when a node, what is known of it or its permissions may have changed.
    virtual std::unique_ptr<ChangeWatch> watch() = 0;
};

// The nodes in a folder, with what the kernel and udev say of their device numbers. A node's name says
// nothing: a container may have given it any.
std::unique_ptr<Discovery> makeDiscovery(const std::string& folder = "/dev");

// Where in the machine a device is plugged in, by its path in sysfs. Without the numbers that depend on the
// order in which the kernel found the buses.
std::string portOfSysfsPath(const std::string& path);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
