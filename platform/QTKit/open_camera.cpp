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
    std::shared_ptr<OpenCamera> before; // let go of outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    before.swap(opened_);
    // A session may run on after the device was closed: the camera is then still open. One that was unplugged
    // stays with whoever still holds it, and this open gets the new one.
    std::shared_ptr<OpenCamera> current = last_.lock();
    if (!current || !(*current)->attached()) {
        current = std::make_shared<OpenCamera>(listed_, order_);
        const Error refused = current->open();
        if (refused) {
            opened_.swap(before);
            return refused;
        }
    }
    opened_ = current;
    last_ = current;
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
