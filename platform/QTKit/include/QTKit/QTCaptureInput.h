// What goes into a capture session.
#ifndef OSTREL_QTKIT_QTCAPTUREINPUT_H
#define OSTREL_QTKIT_QTCAPTUREINPUT_H

#import <Foundation/Foundation.h>

@class QTCaptureDevice;

@interface QTCaptureInput : NSObject
@end

@interface QTCaptureDeviceInput : QTCaptureInput {
@private
    QTCaptureDevice* device;
}

- (id)initWithDevice:(QTCaptureDevice*)device;
- (QTCaptureDevice*)device;

@end

#endif
