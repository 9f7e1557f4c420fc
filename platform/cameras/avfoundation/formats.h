// What a device offers, in the terms of the choice that all kinds of camera share.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_FORMATS_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_FORMATS_H

#include "platform/cameras/backend.h"

#import <AVFoundation/AVFoundation.h>

#include <vector>

namespace ostrel {
namespace cameras {
namespace avfoundation {

struct Offer {
    Candidate candidate; // with the shortest interval
    AVCaptureDeviceFormat* format;
};

// The best first; what is slower than the request bears is left out. The formats are the device's.
std::vector<Offer> offersFor(const Request& request, AVCaptureDevice* device);

// What the device has been given.
Mode activeMode(AVCaptureDevice* device);

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
