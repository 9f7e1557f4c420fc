// What stands behind a client's virtual camera object: it plugs in a new camera at each attach().
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_BACKEND_H

#include "platform/cameras/virtual/camera_base.h"

#include <memory>
#include <mutex>
#include <string>

namespace ostrel {

// Thread-safe. A camera that is in use lives on, unplugged, when this is destroyed.
class VirtualCameraBackend {
public:
    VirtualCameraBackend(std::string identifier, std::string displayName);
    virtual ~VirtualCameraBackend() { detach(); }
    VirtualCameraBackend(const VirtualCameraBackend&) = delete;
    VirtualCameraBackend& operator=(const VirtualCameraBackend&) = delete;

    bool attach();
    void detach();
    // The camera as it is plugged in now, or null.
    std::shared_ptr<cameras::VirtualCamera> camera() const;
    cameras::VirtualControls& controls() const { return *controls_; }

protected:
    virtual std::shared_ptr<cameras::VirtualCamera>
    makeCamera(const std::shared_ptr<cameras::VirtualControls>& controls) = 0;

private:
    const std::shared_ptr<cameras::VirtualControls> controls_;
    mutable std::mutex mutex_;
    std::shared_ptr<cameras::VirtualCamera> camera_;
};

} // namespace ostrel

#endif
