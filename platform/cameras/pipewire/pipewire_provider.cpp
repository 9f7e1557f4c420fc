#include "platform/cameras/pipewire/pipewire_provider.h"

#include "platform/cameras/device_texts.h"
#include "platform/cameras/pipewire/daemon_watch.h"
#include "platform/cameras/pipewire/pipewire_backend.h"
#include "platform/cameras/streaming_camera.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <set>
#include <sys/stat.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

namespace {

// The numbers of the device nodes that are known to be below the node.
std::vector<uint64_t> devicesOf(const CameraNode& node) {
    std::vector<uint64_t> devices;
    struct stat file = {};
    if (!node.v4l2Path.empty() && ::stat(node.v4l2Path.c_str(), &file) == 0 && S_ISCHR(file.st_mode))
        devices.push_back(file.st_rdev);
    for (const char* at = node.deviceNumbers.c_str(); *at;) {
        char* end = nullptr;
        const uint64_t device = std::strtoull(at, &end, 10);
        if (end != at && std::find(devices.begin(), devices.end(), device) == devices.end())
            devices.push_back(device);
        at = end != at ? end : at + 1;
    }
    return devices;
}

// A node's name is made from the place where the camera is plugged in, and stays; so it says which camera it
// is.
std::string identifierOf(const CameraNode& node) {
    return "pipewire-" + asciiSafe(node.name);
}

std::string nameOf(const CameraNode& node) {
    for (const std::string* text : {&node.description, &node.name}) {
        const std::string valid = validUtf8(*text);
        if (!valid.empty())
            return valid;
    }
    return "Camera";
}

CameraDetails detailsOf(const CameraNode& node) {
    CameraDetails details = node.details;
    details.kind = "PipeWire";
    details.node = validUtf8(node.name);
    return details;
}

std::string whereOf(const CameraNode& node) {
    return nameOf(node) + " (PipeWire)";
}

class PipewireProvider : public CameraProvider {
public:
    explicit PipewireProvider(std::shared_ptr<Remote> remote) : remote_(std::move(remote)) {}

    std::vector<std::shared_ptr<Camera>> list() override {
        std::vector<std::shared_ptr<Camera>> result;
        for (const CameraNode& node : cameras())
            result.push_back(std::make_shared<StreamingCamera>(
                StreamingCamera::Identity{identifierOf(node), nameOf(node), whereOf(node), detailsOf(node),
                                          devicesOf(node)},
                std::make_shared<PipewireBackend>(remote_, node, whereOf(node))));
        return result;
    }

    std::unique_ptr<ChangeWatch> watch() override { return watchDaemon(remote_); }

    std::vector<NodeReport> nodes() override {
        std::vector<NodeReport> result;
        for (const CameraNode& node : cameras()) {
            NodeReport report;
            const std::vector<uint64_t> devices = devicesOf(node);
            report.path = "pipewire:" + validUtf8(node.name);
            report.device = devices.empty() ? 0 : devices.front();
            report.name = nameOf(node);
            report.identifier = identifierOf(node);
            result.push_back(std::move(report));
        }
        return result;
    }

    std::vector<std::shared_ptr<Backend>> waysTo(uint64_t device) override {
        std::vector<std::shared_ptr<Backend>> result;
        for (const CameraNode& node : cameras()) {
            const std::vector<uint64_t> devices = devicesOf(node);
            if (std::find(devices.begin(), devices.end(), device) != devices.end())
                result.push_back(std::make_shared<PipewireBackend>(remote_, node, whereOf(node)));
        }
        return result;
    }

private:
    // Two of the same name are one camera by all that would be kept of them: the older one.
    std::vector<CameraNode> cameras() {
        std::vector<CameraNode> result;
        const std::shared_ptr<Connection> connection = remote_->ask();
        if (!connection)
            return result;
        result = connection->cameras();
        const auto age = [](const CameraNode& node) {
            return std::strtoull(node.serial.c_str(), nullptr, 10);
        };
        std::stable_sort(result.begin(), result.end(),
                         [&](const CameraNode& a, const CameraNode& b) { return age(a) < age(b); });
        std::set<std::string> names;
        result.erase(std::remove_if(result.begin(), result.end(),
                                    [&](const CameraNode& node) {
                                        return node.name.empty() || !names.insert(node.name).second;
                                    }),
                     result.end());
        return result;
    }

    const std::shared_ptr<Remote> remote_;
};

} // namespace

std::shared_ptr<CameraProvider> makeProvider() {
    return makeProvider(processRemote());
}

std::shared_ptr<CameraProvider> makeProvider(std::shared_ptr<Remote> remote) {
    return std::make_shared<PipewireProvider>(std::move(remote));
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
