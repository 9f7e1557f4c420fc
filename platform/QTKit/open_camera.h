// A device's camera: which object stands for it now, and who keeps it open.
#ifndef OSTREL_PLATFORM_QTKIT_OPEN_CAMERA_H
#define OSTREL_PLATFORM_QTKIT_OPEN_CAMERA_H

#include "platform/cameras/camera.h"

#include <memory>
#include <mutex>
#include <string>

namespace ostrel {

// An opened camera: closed when the last holder lets go. Holders are the device, while it is open, and every
// session that runs on it.
class OpenCamera {
public:
    explicit OpenCamera(std::shared_ptr<cameras::Camera> camera) : camera_(std::move(camera)) {}
    ~OpenCamera() {
        if (open_)
            camera_->close();
    }
    OpenCamera(const OpenCamera&) = delete;
    OpenCamera& operator=(const OpenCamera&) = delete;

    cameras::Error open() {
        const cameras::Error refused = camera_->open();
        open_ = !refused;
        return refused;
    }
    cameras::Camera* operator->() const { return camera_.get(); }

private:
    std::shared_ptr<cameras::Camera> camera_;
    bool open_ = false;
};

} // namespace ostrel

// Thread-safe. Every device has one, for as long as the process lives.
struct QTCaptureDeviceState {
    explicit QTCaptureDeviceState(const std::shared_ptr<ostrel::cameras::Camera>& camera)
        : identifier(camera->identifier()), listed_(camera) {}

    const std::string identifier;
    std::string displayName();

    // The object that the newest listing has for this identifier: used from the next open on.
    void setListed(const std::shared_ptr<ostrel::cameras::Camera>& camera);

    ostrel::cameras::Error open();
    void close();
    // Null when the device is not open.
    std::shared_ptr<ostrel::OpenCamera> opened();

private:
    std::mutex mutex_;
    std::shared_ptr<ostrel::cameras::Camera> listed_;
    std::shared_ptr<ostrel::OpenCamera> opened_;
    unsigned opens_ = 0;
};

namespace ostrel {

// The opened camera with this identifier (UTF-8); null when none is open. Thread-safe.
std::shared_ptr<OpenCamera> openedCamera(const std::string& identifier);

} // namespace ostrel

#endif
