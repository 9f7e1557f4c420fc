// Which video nodes the machine has, and what can be known of them without opening them.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_DISCOVERY_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_DISCOVERY_H

#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Facts that are not known are empty. Texts are bytes as the system gives them.
struct NodeFacts {
    std::string path;        // "/dev/video0"
    std::string incarnation; // another one after each re-plug
    // What udev's own look at the node found, ":capture:"; meaningful when `described`.
    bool described = false;
    std::string capabilities;
    bool isUsb = false;     // what it can do never changes
    bool isVirtual = false; // no hardware: what it can do may change at any time
    std::string model;      // "046d:0825"
    std::string serial;     // of the device, often the same for all of a model
    std::string port;       // where it is plugged in
    std::string interface;  // part of the device, "00"
    int index = 0;          // among the nodes of one interface
    std::string name;
    std::string driver;
};

// Thread-safe.
class Discovery {
public:
    virtual ~Discovery() = default;
    // In the order of the nodes' numbers.
    virtual std::vector<NodeFacts> nodes() = 0;
    // What `incarnation` of the node would be now; empty when there is no such node.
    virtual std::string incarnation(const std::string& path) = 0;
};

// udev's, with what is in /dev but unknown to it added.
std::unique_ptr<Discovery> makeDiscovery();

// Where in the machine a device is plugged in, by its path in sysfs. Without the numbers that depend on the
// order in which the kernel found the buses.
std::string portOfSysfsPath(const std::string& path);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
