#include "platform/cameras/avfoundation/av_provider.h"

#include "base/autorelease_scope.h"
#include "base/fast_enumeration.h"
#include "platform/cameras/avfoundation/av_backend.h"
#include "platform/cameras/avfoundation/device_watch.h"
#include "platform/cameras/avfoundation/guard.h"
#include "platform/cameras/avfoundation/main_loop.h"

#include <dlfcn.h>
#include <map>
#include <mutex>

namespace ostrel {
namespace cameras {
namespace avfoundation {

namespace {

// A name that some of the supported systems have and some of the SDKs declare; nil where there is none.
NSString* ifPublished(const char* name) {
    NSString* const* const constant = static_cast<NSString* const*>(::dlsym(RTLD_DEFAULT, name));
    return constant ? *constant : nil;
}

// No Desk View, which shows the same phone's picture once more.
NSArray* cameraTypes() {
    NSMutableArray* const types = [NSMutableArray array];
    [types addObject:AVCaptureDeviceTypeBuiltInWideAngleCamera];
    NSString* const external = ifPublished("AVCaptureDeviceTypeExternal"); // macOS 14
    NSString* const before = ifPublished("AVCaptureDeviceTypeExternalUnknown");
    if (external || before)
        [types addObject:external ? external : before];
    if (NSString* const phone = ifPublished("AVCaptureDeviceTypeContinuityCamera")) // macOS 14
        [types addObject:phone];
    return types;
}

NSArray* attachedDevices() {
    NSArray* devices = nil;
    guarded([&] {
        devices = [[AVCaptureDeviceDiscoverySession
            discoverySessionWithDeviceTypes:cameraTypes()
                                  mediaType:AVMediaTypeVideo
                                   position:AVCaptureDevicePositionUnspecified] devices];
    });
    return devices;
}

class AvProvider : public CameraProvider {
public:
    std::vector<std::shared_ptr<Camera>> list() override;
    std::unique_ptr<ChangeWatch> watch() override { return watchDevices(); }

private:
    struct Known {
        AVCaptureDevice* device; // the camera's own
        std::shared_ptr<Camera> camera;
    };

    std::mutex mutex_;
    std::map<std::string, Known> known_; // by identifier
};

// A device that has been disconnected never comes back: what is plugged in again is another object.
std::vector<std::shared_ptr<Camera>> AvProvider::list() {
    const AutoreleaseScope pool;
    turnIdleMainLoop();
    NSArray* const devices = attachedDevices();
    std::vector<std::shared_ptr<Camera>> cameras;
    std::map<std::string, Known> now; // what has left is let go of outside the lock
    const std::lock_guard<std::mutex> lock(mutex_);
    forEachObject(devices, [&](id one) {
        AVCaptureDevice* const device = one;
        if (![device isConnected])
            return true;
        const std::string identifier = textOf([device uniqueID]);
        const auto before = known_.find(identifier);
        const bool same = before != known_.end() && before->second.device == device;
        const auto added = now.emplace(identifier, same ? before->second : Known{device, makeCamera(device)});
        if (added.second)
            cameras.push_back(added.first->second.camera);
        return true;
    });
    known_.swap(now);
    return cameras;
}

} // namespace

std::shared_ptr<CameraProvider> makeProvider() {
    return std::make_shared<AvProvider>();
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
