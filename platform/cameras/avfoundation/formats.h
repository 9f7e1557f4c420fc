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
    Candidate candidate; // with the wished interval, else the shortest
    AVCaptureDeviceFormat* format;
    CMTime frameDuration; // invalid: the system's own
};

// Of what fits the wish the best first; what is slower than the request bears is left out. The formats are
// the device's.
std::vector<Offer> offersFor(const Request& request, AVCaptureDevice* device);

// All of them, each with each of its ranges of rates. The system makes pictures of any.
void addModes(AVCaptureDevice* device, NativeModes& modes);

// What the device has been given.
Mode activeMode(AVCaptureDevice* device);

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
