#include "platform/cameras/avfoundation/receiver.h"

#include "platform/cameras/avfoundation/guard.h"

#include <new>

@implementation OstrelFrameReceiver

- (id)initWithInbox:(const std::shared_ptr<ostrel::cameras::avfoundation::Inbox>&)newInbox {
    if ((self = [super init]))
        inbox = newInbox;
    return self;
}

- (void)observeSession:(AVCaptureSession*)session device:(AVCaptureDevice*)device {
    NSNotificationCenter* const center = [NSNotificationCenter defaultCenter];
    [center addObserver:self
               selector:@selector(deviceHasLeft:)
                   name:AVCaptureDeviceWasDisconnectedNotification
                 object:device];
    [center addObserver:self
               selector:@selector(sessionHasFailed:)
                   name:AVCaptureSessionRuntimeErrorNotification
                 object:session];
    [center addObserver:self
               selector:@selector(sessionIsInterrupted:)
                   name:AVCaptureSessionWasInterruptedNotification
                 object:session];
    [center addObserver:self
               selector:@selector(sessionGoesOn:)
                   name:AVCaptureSessionInterruptionEndedNotification
                 object:session];
}

- (void)stopObserving {
    [[NSNotificationCenter defaultCenter] removeObserver:self];
}

- (void)captureOutput:(AVCaptureOutput*)output
    didOutputSampleBuffer:(CMSampleBufferRef)sample
           fromConnection:(AVCaptureConnection*)connection {
    (void)output;
    (void)connection;
    inbox->put(CMSampleBufferGetImageBuffer(sample));
}

- (void)deviceHasLeft:(NSNotification*)note {
    (void)note;
    inbox->wake(); // the device itself says the rest
}

- (void)sessionHasFailed:(NSNotification*)note {
    NSError* const error = [[note userInfo] objectForKey:AVCaptureSessionErrorKey];
    try {
        inbox->fail(ostrel::cameras::avfoundation::textOf([error localizedDescription]));
    } catch (const std::bad_alloc&) {
        inbox->fail(std::string());
    }
}

- (void)sessionIsInterrupted:(NSNotification*)note {
    (void)note;
    inbox->setInterrupted(true);
}

- (void)sessionGoesOn:(NSNotification*)note {
    (void)note;
    inbox->setInterrupted(false);
}

@end
