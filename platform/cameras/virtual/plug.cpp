#include "platform/cameras/virtual/plug.h"

#include "platform/cameras/virtual/virtual_provider.h"

#include <algorithm>

namespace ostrel {

namespace {

cameras::StreamingCamera::Identity identityOf(std::string identifier, const std::string& displayName) {
    const std::string& name = displayName.empty() ? identifier : displayName;
    cameras::CameraDetails details;
    details.kind = "virtual";
    return {identifier, name, name, details};
}

// Captures carry identifiers as ASCII: a camera with any other would be listed but never found.
bool canBeCaptured(const std::string& identifier) {
    return !identifier.empty() &&
           std::all_of(identifier.begin(), identifier.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

} // namespace

VirtualCameraBackend::VirtualCameraBackend(std::string identifier, const std::string& displayName)
    : identity_(identityOf(std::move(identifier), displayName)) {}

bool VirtualCameraBackend::attach() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (camera_ || !canBeCaptured(identifier()))
        return false;
    const auto backend = std::make_shared<cameras::FaultyBackend>(makeBackend(), fault_, displayName());
    auto fresh = std::make_shared<cameras::StreamingCamera>(identity_, backend, totals_);
    if (!cameras::addCamera(fresh))
        return false;
    camera_ = std::move(fresh);
    return true;
}

void VirtualCameraBackend::detach() {
    std::shared_ptr<cameras::StreamingCamera> gone;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        gone = std::move(camera_);
        camera_.reset();
        if (gone)
            cameras::removeCamera(gone);
    }
    // Sinks are called from here: no lock.
    if (gone)
        gone->unplug();
}

bool VirtualCameraBackend::isAttached() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return camera_ != nullptr;
}

} // namespace ostrel
