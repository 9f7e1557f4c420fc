#include "platform/cameras/virtual/backend.h"

#include "platform/cameras/registry.h"

namespace ostrel {

VirtualCameraBackend::VirtualCameraBackend(std::string identifier, std::string displayName)
    : controls_(std::make_shared<cameras::VirtualControls>(std::move(identifier), std::move(displayName))) {}

bool VirtualCameraBackend::attach() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (camera_ || controls_->identifier.empty())
        return false;
    std::shared_ptr<cameras::VirtualCamera> fresh = makeCamera(controls_);
    if (!cameras::addCamera(fresh))
        return false;
    camera_ = std::move(fresh);
    return true;
}

void VirtualCameraBackend::detach() {
    std::shared_ptr<cameras::VirtualCamera> gone;
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

std::shared_ptr<cameras::VirtualCamera> VirtualCameraBackend::camera() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return camera_;
}

} // namespace ostrel
