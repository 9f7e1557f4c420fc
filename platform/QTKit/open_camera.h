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
    // order: held while the camera opens or closes, by all that open the same camera.
    OpenCamera(std::shared_ptr<cameras::Camera> camera, std::shared_ptr<std::mutex> order)
        : camera_(std::move(camera)), order_(std::move(order)) {}
    ~OpenCamera() {
        std::lock_guard<std::mutex> lock(*order_);
        if (open_)
            camera_->close();
    }
    OpenCamera(const OpenCamera&) = delete;
    OpenCamera& operator=(const OpenCamera&) = delete;

    cameras::Error open() {
        std::lock_guard<std::mutex> lock(*order_);
        const cameras::Error refused = camera_->open();
        open_ = !refused;
        return refused;
    }
    cameras::Camera* operator->() const { return camera_.get(); }

private:
    const std::shared_ptr<cameras::Camera> camera_;
    const std::shared_ptr<std::mutex> order_;
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
    std::shared_ptr<ostrel::OpenCamera> opened_; // while opens_ is not 0
    std::weak_ptr<ostrel::OpenCamera> last_;     // the same, and for as long as a session still runs on it
    unsigned opens_ = 0;
    const std::shared_ptr<std::mutex> order_ = std::make_shared<std::mutex>();
};

namespace ostrel {

// The opened camera with this identifier (UTF-8); null when none is open. Thread-safe.
std::shared_ptr<OpenCamera> openedCamera(const std::string& identifier);

} // namespace ostrel

#endif
