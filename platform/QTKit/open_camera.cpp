#include "platform/QTKit/open_camera.h"

using ostrel::OpenCamera;
using ostrel::cameras::Camera;
using ostrel::cameras::Error;

std::string QTCaptureDeviceState::displayName() {
    std::shared_ptr<Camera> camera;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        camera = listed_;
    }
    return camera->displayName();
}

void QTCaptureDeviceState::setListed(const std::shared_ptr<Camera>& camera) {
    std::shared_ptr<Camera> before; // let go of outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    before.swap(listed_);
    listed_ = camera;
}

Error QTCaptureDeviceState::open() {
    std::shared_ptr<OpenCamera> gone; // closed outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    if (opened_ && !(*opened_)->attached())
        gone.swap(opened_); // unplugged: whoever still runs on it keeps it, and this open gets the new one
    if (!opened_) {
        const auto fresh = std::make_shared<OpenCamera>(listed_);
        const Error refused = fresh->open();
        if (refused)
            return refused;
        opened_ = fresh;
    }
    ++opens_;
    return Error();
}

void QTCaptureDeviceState::close() {
    std::shared_ptr<OpenCamera> last; // closed outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    if (opens_ > 0 && --opens_ == 0)
        last.swap(opened_);
}

std::shared_ptr<OpenCamera> QTCaptureDeviceState::opened() {
    std::lock_guard<std::mutex> lock(mutex_);
    return opened_;
}
