// What stands behind a client's virtual camera object: it plugs in a new camera at each attach().
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_PLUG_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_PLUG_H

#include "platform/cameras/streaming_camera.h"
#include "platform/cameras/virtual/faulty_backend.h"

#include <memory>
#include <mutex>
#include <string>

namespace ostrel {

// Thread-safe. A camera that is in use lives on, unplugged, when this is destroyed.
class VirtualCameraBackend {
public:
    VirtualCameraBackend(std::string identifier, const std::string& displayName);
    virtual ~VirtualCameraBackend() { detach(); }
    VirtualCameraBackend(const VirtualCameraBackend&) = delete;
    VirtualCameraBackend& operator=(const VirtualCameraBackend&) = delete;

    bool attach();
    void detach();
    bool isAttached() const;

    const std::string& identifier() const { return identity_.identifier; }
    const std::string& displayName() const { return identity_.displayName; }
    cameras::Fault& fault() { return *fault_; }
    // Over all attachments.
    const cameras::Totals& totals() const { return *totals_; }

protected:
    // For the camera that is about to be plugged in.
    virtual std::shared_ptr<cameras::Backend> makeBackend() = 0;

private:
    const cameras::StreamingCamera::Identity identity_;
    const std::shared_ptr<cameras::Fault> fault_ =
        std::make_shared<cameras::Fault>(VIRTUAL_CAMERA_FAULT_NONE);
    const std::shared_ptr<cameras::Totals> totals_ = std::make_shared<cameras::Totals>();
    mutable std::mutex mutex_;
    std::shared_ptr<cameras::StreamingCamera> camera_; // as it is plugged in now, or null
};

} // namespace ostrel

#endif
