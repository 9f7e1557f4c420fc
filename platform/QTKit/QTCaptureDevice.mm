#import <QTKit/QTCaptureDevice.h>

#include "platform/cameras/registry.h"
#include "platform/QTKit/device_access.h"
#include "platform/QTKit/framework_error.h"
#include "platform/QTKit/owner_scope.h"

#include <map>
#include <memory>

using ostrel::cameras::Camera;

NSString* const QTMediaTypeVideo = @"vide";

@interface QTCaptureDevice (OstrelPrivate)
- (id)initWithState:(QTCaptureDeviceState*)newState;
- (QTCaptureDeviceState*)state;
@end

namespace {

// Every device that was ever listed, by its identifier. Never destroyed, as the devices are not.
class DeviceTable {
public:
    QTCaptureDevice* deviceFor(const std::shared_ptr<Camera>& camera) {
        const std::string identifier = camera->identifier();
        std::lock_guard<std::mutex> lock(mutex_);
        QTCaptureDevice*& device = devices_[identifier]; // first, as it may throw
        if (device) {
            ostrel::stateOf(device)->setListed(camera);
        } else {
            auto fresh = std::make_unique<QTCaptureDeviceState>(camera);
            device = [[QTCaptureDevice alloc] initWithState:fresh.release()];
        }
        return device;
    }

    // Nil when no camera with this identifier was ever listed.
    QTCaptureDevice* deviceWith(const std::string& identifier) {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto found = devices_.find(identifier);
        return found == devices_.end() ? nil : found->second;
    }

private:
    std::mutex mutex_;
    std::map<std::string, QTCaptureDevice*> devices_;
};

DeviceTable& deviceTable() {
    static DeviceTable* const table = new DeviceTable;
    return *table;
}

} // namespace

QTCaptureDeviceState* ostrel::stateOf(QTCaptureDevice* device) {
    return [device state];
}

QTCaptureDeviceState* ostrel::deviceStateOf(const std::string& identifier) {
    QTCaptureDevice* device = deviceTable().deviceWith(identifier);
    return device ? stateOf(device) : nullptr;
}

@implementation QTCaptureDevice

+ (NSArray*)inputDevicesWithMediaType:(NSString*)mediaType {
    NSMutableArray* devices = [NSMutableArray array];
    if ([mediaType isEqualToString:QTMediaTypeVideo])
        for (const auto& camera : ostrel::cameras::attachedCameras())
            [devices addObject:deviceTable().deviceFor(camera)];
    return devices;
}

- (id)initWithState:(QTCaptureDeviceState*)newState {
    if ((self = [super init]))
        state = newState;
    return self;
}

- (QTCaptureDeviceState*)state {
    return state;
}

- (NSString*)uniqueID {
    return ostrel::toNSString(state->identifier);
}

- (NSString*)localizedDisplayName {
    return ostrel::toNSString(state->displayName());
}

- (BOOL)open:(NSError**)errorPtr {
    return ostrel::report(state->open(ostrel::OwnerScope::current()), errorPtr);
}

- (void)close {
    state->close(ostrel::OwnerScope::current());
}

@end
