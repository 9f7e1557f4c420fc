#include "platform/QTKit/open_camera.h"

#include "platform/QTKit/frame_slot.h"
#include "platform/QTKit/owner_scope.h"

#include <algorithm>

using ostrel::DeviceReport;
using ostrel::OpenCamera;
using ostrel::Refused;
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

Error QTCaptureDeviceState::open(const void* owner) {
    // Let go of outside both locks: to close a camera takes the turn.
    std::shared_ptr<OpenCamera> before, last, current;
    std::lock_guard<std::mutex> turn(*turn_);
    std::shared_ptr<Camera> listed;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        last = last_.lock();
        listed = listed_;
        refusedAt_ = Refused::Nowhere;
        refusal_ = Error();
        owners_.reserve(owners_.size() + 1); // what may fail, before anything has happened
    }
    // A session may run on after the device was closed: the camera is then still open. One that was unplugged
    // stays with whoever still holds it, and this open gets the new one.
    current = last;
    if (!current || !(*current)->attached()) {
        current = std::make_shared<OpenCamera>(listed, turn_);
        const Error refused = current->open();
        if (refused) {
            setRefused(Refused::Opening, refused);
            std::lock_guard<std::mutex> lock(mutex_);
            listed.swap(newest_);
            newest_ = current->camera();
            return refused;
        }
    }
    std::lock_guard<std::mutex> lock(mutex_);
    listed.swap(newest_);
    newest_ = current->camera();
    before.swap(opened_);
    opened_ = current;
    last_ = current;
    owners_.push_back(owner);
    return Error();
}

void QTCaptureDeviceState::close(const void* owner) {
    std::shared_ptr<OpenCamera> last; // closed outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    const auto one = std::find(owners_.begin(), owners_.end(), owner);
    if (one == owners_.end())
        return;
    owners_.erase(one);
    if (owners_.empty())
        last.swap(opened_);
}

std::shared_ptr<OpenCamera> QTCaptureDeviceState::opened() {
    std::lock_guard<std::mutex> lock(mutex_);
    return opened_;
}

void QTCaptureDeviceState::setRefused(Refused where, const Error& why) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        refusedAt_ = where;
        refusal_ = why;
    }
    // After that: who is told looks for it at once.
    ostrel::FrameSlot::refuse(ostrel::OwnerScope::current(), why.text);
}

DeviceReport QTCaptureDeviceState::report() {
    DeviceReport report;
    std::shared_ptr<Camera> camera;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        report.open = opened_ != nullptr;
        report.refusedAt = refusedAt_;
        report.refusal = refusal_;
        camera = opened_ ? opened_->camera() : newest_;
    }
    if (camera)
        report.statistics = camera->statistics();
    return report;
}
