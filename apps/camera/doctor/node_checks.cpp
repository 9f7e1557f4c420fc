// Whether there are cameras, and whether this user may use them.
#include "apps/camera/doctor/checks.h"
#include "apps/common/text.h"

#include <algorithm>

namespace ostrel::apps::cli::doctor {

namespace {

std::string describe(const UsbVideo& device) {
    return device.name + " (USB port " + device.port + ")";
}

// USB says that there is a camera, and yet there is no node.
Finding withoutNodes(const Machine& machine) {
    Finding finding{"nodes", Verdict::Problem, {}, {}, {}};
    std::vector<std::string> names;
    for (const UsbVideo& device : machine.usb)
        names.push_back(describe(device));
    const std::string devices = join(names, ", ");
    const bool driven = std::any_of(machine.usb.begin(), machine.usb.end(),
                                    [](const UsbVideo& device) { return !device.driver.empty(); });
    if (machine.usb.empty()) {
        finding.fact =
            "no camera is attached: there is no /dev/video*, and no USB device says that it is one";
        finding.next = "plug one in; 'ostrel-camera snapshot --test-camera' works without";
    } else if (machine.container) {
        finding.fact = devices + " is attached, but this container has no /dev/video*";
        finding.next = "start the container with --device /dev/video0";
    } else if (driven) {
        finding.fact = devices + " has a driver, but there is no /dev/video*";
        finding.next = "sudo udevadm trigger --subsystem-match=video4linux";
    } else {
        finding.fact = devices + " is attached, but no driver has taken it";
        finding.next = "sudo modprobe uvcvideo";
    }
    return finding;
}

Finding permissionOf(const Node& node, bool container) {
    Finding finding{"permission", Verdict::Problem, {}, {}, {}};
    if (node.access == Node::Access::Denied) {
        finding.fact = "the container or service that this runs in may not use " + node.path;
        finding.next = "give it the device: --device " + node.path +
                       " for a container, DeviceAllow=" + node.path + " for a service";
        return finding;
    }
    finding.fact = "you may not open " + node.path;
    if (node.group.empty()) {
        finding.fact += ", and neither may any group";
        finding.next = "ask the administrator of this machine for access";
    } else if (container) {
        finding.fact += "; the group " + node.group + " may";
        finding.next = "start the container with --group-add " + node.group;
    } else if (node.memberAfterLogin) {
        finding.fact += ": you are in the group " + node.group + ", but not since before you logged in";
        finding.next = "log out and in again";
    } else {
        finding.fact += "; the group " + node.group + " may";
        finding.next = "sudo usermod -aG " + node.group + " \"$USER\", then log out and in again";
    }
    return finding;
}

} // namespace

const Node* Machine::nodeOf(const std::string& camera) const {
    const auto found =
        std::find_if(nodes.begin(), nodes.end(), [&](const Node& node) { return node.camera == camera; });
    return camera.empty() || found == nodes.end() ? nullptr : &*found;
}

Finding checkNodes(const Machine& machine) {
    const auto added = static_cast<unsigned long long>(machine.pipeWire.added);
    if (machine.nodes.empty() && added > 0)
        return {
            "nodes", Verdict::Ok, "no video node; " + counted(added, "camera") + " through PipeWire", {}, {}};
    if (machine.nodes.empty())
        return withoutNodes(machine);
    const auto cameras = std::count_if(machine.nodes.begin(), machine.nodes.end(),
                                       [](const Node& node) { return !node.camera.empty(); });
    Finding finding{"nodes", Verdict::Ok, {}, {}, {}};
    finding.fact = counted(machine.nodes.size(), "video node") + ", " +
                   counted(static_cast<unsigned long long>(cameras), "camera");
    if (added > 0)
        finding.fact += ", " + std::to_string(added) + " more through PipeWire";
    if (cameras == 0 && added == 0) {
        finding.verdict = Verdict::Problem;
        finding.fact = "no camera: none of " + counted(machine.nodes.size(), "video node") + " is one";
        finding.next = "ostrel-camera list --all";
    }
    return finding;
}

Findings checkPermissions(const Machine& machine) {
    Findings findings;
    for (const Node& node : machine.nodes)
        if (node.access == Node::Access::NotPermitted || node.access == Node::Access::Denied)
            findings.push_back(permissionOf(node, machine.container));
    if (findings.empty() && !machine.nodes.empty())
        findings.push_back({"permission", Verdict::Ok, "you may open every video node", {}, {}});
    return findings;
}

} // namespace ostrel::apps::cli::doctor
