#import <QTKit/QTCaptureInput.h>

#import <QTKit/QTCaptureDevice.h>

@implementation QTCaptureInput
@end

@implementation QTCaptureDeviceInput

- (id)initWithDevice:(QTCaptureDevice*)newDevice {
    if ((self = [super init]))
        device = [newDevice retain];
    return self;
}

- (void)dealloc {
    [device release];
    [super dealloc];
}

- (QTCaptureDevice*)device {
    return device;
}

@end
