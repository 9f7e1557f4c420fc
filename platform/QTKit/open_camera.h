// A device's camera: which object stands for it now, and who keeps it open.
#ifndef OSTREL_PLATFORM_QTKIT_OPEN_CAMERA_H
#define OSTREL_PLATFORM_QTKIT_OPEN_CAMERA_H

#include "platform/cameras/camera.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel {

// An opened camera: closed when the last holder lets go. Holders are the device, while it is open, and every
// session that runs on it.
class OpenCamera {
public:
    // turn: held while the camera opens or closes, by all that open the same camera.
    OpenCamera(std::shared_ptr<cameras::Camera> camera, std::shared_ptr<std::mutex> turn)
        : camera_(std::move(camera)), turn_(std::move(turn)) {}
    ~OpenCamera() {
        if (!open_)
            return;
        std::lock_guard<std::mutex> lock(*turn_);
        camera_->close();
    }
    OpenCamera(const OpenCamera&) = delete;
    OpenCamera& operator=(const OpenCamera&) = delete;

    // With the turn held.
    cameras::Error open() {
        const cameras::Error refused = camera_->open();
        open_ = !refused;
        return refused;
    }
    const std::shared_ptr<cameras::Camera>& camera() const { return camera_; }
    cameras::Camera* operator->() const { return camera_.get(); }
    // Each delivery that runs holds one.
    const std::shared_ptr<const int>& share() const { return share_; }

private:
    const std::shared_ptr<const int> share_ = std::make_shared<const int>(0);
    const std::shared_ptr<cameras::Camera> camera_;
    const std::shared_ptr<std::mutex> turn_;
    bool open_ = false;
};

// Where a start that gave no frames was refused.
enum class Refused { Nowhere, Opening, Input, Output };

// What can be told of a device's camera, open or not.
struct DeviceReport {
    bool open = false;
    Refused refusedAt = Refused::Nowhere; // the last start
    cameras::Error refusal;
    cameras::StreamStatistics statistics; // of the newest stream
};

} // namespace ostrel

// Thread-safe; but for open() and close(), which may wait for the camera, everything answers at once. Every
// device has one, for as long as the process lives.
struct QTCaptureDeviceState {
    explicit QTCaptureDeviceState(const std::shared_ptr<ostrel::cameras::Camera>& camera)
        : identifier(camera->identifier()), listed_(camera) {}

    const std::string identifier;
    std::string displayName();

    // The object that the newest listing has for this identifier: used from the next open on.
    void setListed(const std::shared_ptr<ostrel::cameras::Camera>& camera);

    // Each successful open is the owner's, and only the same owner's close takes it back. Null is an owner
    // too.
    ostrel::cameras::Error open(const void* owner);
    void close(const void* owner);
    // Null when the device is not open.
    std::shared_ptr<ostrel::OpenCamera> opened();

    void setRefused(ostrel::Refused where, const ostrel::cameras::Error& why);
    ostrel::DeviceReport report();

private:
    const std::shared_ptr<std::mutex> turn_ = std::make_shared<std::mutex>(); // of opening and closing

    std::mutex mutex_; // of the rest; never held while a camera opens, closes or is let go of
    std::shared_ptr<ostrel::cameras::Camera> listed_;
    std::shared_ptr<ostrel::cameras::Camera> newest_; // that was opened, or would not open
    std::shared_ptr<ostrel::OpenCamera> opened_;      // while somebody has it open
    std::weak_ptr<ostrel::OpenCamera> last_; // the same, and for as long as a session still runs on it
    std::vector<const void*> owners_;        // one entry for each open
    ostrel::Refused refusedAt_ = ostrel::Refused::Nowhere;
    ostrel::cameras::Error refusal_;
};

namespace ostrel {

// The state of the device with this identifier (UTF-8); null when none was ever listed. Thread-safe.
QTCaptureDeviceState* deviceStateOf(const std::string& identifier);

} // namespace ostrel

#endif
