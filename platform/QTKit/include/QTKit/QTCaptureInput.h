// What goes into a capture session.
#ifndef OSTREL_QTKIT_QTCAPTUREINPUT_H
#define OSTREL_QTKIT_QTCAPTUREINPUT_H

#include <ostrel/export.h>

#import <Foundation/Foundation.h>

@class QTCaptureDevice;

OSTREL_EXPORT
@interface QTCaptureInput : NSObject
@end

OSTREL_EXPORT
@interface QTCaptureDeviceInput : QTCaptureInput {
@private
    QTCaptureDevice* device;
}

- (id)initWithDevice:(QTCaptureDevice*)device;
- (QTCaptureDevice*)device;

@end

#endif
