// What the doctor knows of a machine. The checks see nothing else, so that tests make up any machine.
#ifndef OSTREL_APPS_CAMERA_DOCTOR_MACHINE_H
#define OSTREL_APPS_CAMERA_DOCTOR_MACHINE_H

#include <string>
#include <vector>

namespace ostrel::apps::cli::doctor {

// A USB device with a video interface (class 0e).
struct UsbVideo {
    std::string name;
    std::string port;   // "1-3.2"
    std::string driver; // of the interface; empty where none has taken it
};

// A process that has a node open.
struct Holder {
    int process = 0;
    std::string program;
};

// Of a grabber with analog inputs.
struct AnalogInput {
    bool known = false; // there are inputs to choose, or television standards
    int number = 0;
    int count = 0;
    std::string name;
    std::string standard; // "PAL"; empty where the input has none
    bool noSignal = false;
};

struct Node {
    enum class Access {
        Open,
        NotPermitted, // by the permissions of the file (EACCES)
        Denied,       // by the device rules of a container or service (EPERM)
        Other         // it opens for others, or there is no such device any more
    };

    std::string path;   // "/dev/video0"
    std::string name;   // for people
    std::string camera; // its identifier; empty when the node is no camera
    std::string reason; // why it is none; see OVideoNode
    Access access = Access::Open;
    std::string group;             // whose members may open it; empty when no group may
    bool memberAfterLogin = false; // the user is in that group, the running session is not
    std::string bus;               // the USB bus, "usb1"; empty for others
    std::vector<Holder> holders;   // other processes, as far as this user may see them
    AnalogInput input;
};

// The daemon that has the cameras of this session, those without a video node included.
struct PipeWire {
    enum class State { NotBuilt, NoDaemon, NoLibrary, Silent, Connected };

    State state = State::NotBuilt;
    std::string where; // its socket
    std::string version;
    bool sessionManager = false;
    int cameras = 0, otherSources = 0;
    int added = 0; // cameras without a video node in the listing
};

struct Machine {
    bool tellsOfNodes = true; // false where cameras are no files, and everything below is unknown
    bool container = false;   // this program runs in one
    std::vector<UsbVideo> usb;
    std::vector<Node> nodes;
    PipeWire pipeWire;

    const Node* nodeOf(const std::string& camera) const; // null for cameras without a node
};

// What stands below `root`: "" is the machine itself.
std::vector<UsbVideo> usbVideoDevices(const std::string& root);
Machine thisMachine();

} // namespace ostrel::apps::cli::doctor

#endif
