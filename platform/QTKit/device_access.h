// From a device to its camera, for the other classes of the framework.
#ifndef OSTREL_PLATFORM_QTKIT_DEVICE_ACCESS_H
#define OSTREL_PLATFORM_QTKIT_DEVICE_ACCESS_H

#include "platform/QTKit/open_camera.h"

#import <QTKit/QTCaptureDevice.h>

namespace ostrel {

QTCaptureDeviceState* stateOf(QTCaptureDevice* device);

} // namespace ostrel

#endif
