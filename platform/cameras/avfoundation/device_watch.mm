#include "platform/cameras/avfoundation/device_watch.h"

#include "base/autorelease_scope.h"
#include "base/wake_descriptor.h"
#include "platform/cameras/avfoundation/main_loop.h"
#include "platform/cameras/avfoundation/owned.h"
#include "platform/cameras/descriptor_set.h"
#include "platform/cameras/ticker.h"

#import <AVFoundation/AVFoundation.h>

// Notifications that are on their way when it stops observing may still come.
@interface OstrelDeviceObserver : NSObject {
@private
    std::shared_ptr<const ostrel::WakeDescriptor> wake;
}
- (id)initWithWake:(const std::shared_ptr<const ostrel::WakeDescriptor>&)newWake;
- (void)observe;
- (void)stopObserving;
@end

@implementation OstrelDeviceObserver

- (id)initWithWake:(const std::shared_ptr<const ostrel::WakeDescriptor>&)newWake {
    if ((self = [super init]))
        wake = newWake;
    return self;
}

- (void)observe {
    NSNotificationCenter* const center = [NSNotificationCenter defaultCenter];
    [center addObserver:self
               selector:@selector(devicesHaveChanged:)
                   name:AVCaptureDeviceWasConnectedNotification
                 object:nil];
    [center addObserver:self
               selector:@selector(devicesHaveChanged:)
                   name:AVCaptureDeviceWasDisconnectedNotification
                 object:nil];
}

- (void)stopObserving {
    [[NSNotificationCenter defaultCenter] removeObserver:self];
}

- (void)devicesHaveChanged:(NSNotification*)note {
    (void)note;
    wake->set();
}

@end

namespace ostrel {
namespace cameras {
namespace avfoundation {

namespace {

class DeviceWatch : public ChangeWatch {
public:
    DeviceWatch() {
        const AutoreleaseScope pool;
        [observer_.get() observe];
        complete_ = set_.add(told_->descriptor());
        complete_ = set_.add(turns_.descriptor()) && complete_;
    }
    ~DeviceWatch() override {
        const AutoreleaseScope pool;
        [observer_.get() stopObserving];
    }
    DeviceWatch(const DeviceWatch&) = delete;
    DeviceWatch& operator=(const DeviceWatch&) = delete;

    int descriptor() const override { return complete_ ? set_.descriptor() : -1; }

    bool changed() override {
        const AutoreleaseScope pool;
        if (turns_.clear())
            turnIdleMainLoop();
        turns_.switchOn(isIdleMainThread());
        return told_->clear();
    }

private:
    const std::shared_ptr<const WakeDescriptor> told_ = std::make_shared<WakeDescriptor>();
    const Owned<OstrelDeviceObserver> observer_{[[OstrelDeviceObserver alloc] initWithWake:told_]};
    Ticker turns_;
    DescriptorSet set_; // after what is in it
    bool complete_ = false;
};

} // namespace

std::unique_ptr<ChangeWatch> watchDevices() {
    return std::make_unique<DeviceWatch>();
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
