// Whom the framework calls.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_RECEIVER_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_RECEIVER_H

#include "platform/cameras/avfoundation/inbox.h"

#import <AVFoundation/AVFoundation.h>

// The framework holds neither its delegates nor its observers, and may call a delegate once more for each
// frame that was on the way when it was taken back: whoever lets go of a receiver does so on its queue,
// behind them. Calls may come on any thread.
@interface OstrelFrameReceiver : NSObject <AVCaptureVideoDataOutputSampleBufferDelegate> {
@private
    std::shared_ptr<ostrel::cameras::avfoundation::Inbox> inbox;
}
- (id)initWithInbox:(const std::shared_ptr<ostrel::cameras::avfoundation::Inbox>&)newInbox;
// From now on until it stops observing, it is told of what happens to them.
- (void)observeSession:(AVCaptureSession*)session device:(AVCaptureDevice*)device;
- (void)stopObserving;
@end

#endif
