// The cameras that AVFoundation knows.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_PROVIDER_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_PROVIDER_H

#include "platform/cameras/provider.h"

namespace ostrel {
namespace cameras {
namespace avfoundation {

std::shared_ptr<CameraProvider> makeProvider();

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
