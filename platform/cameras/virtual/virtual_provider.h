// The virtual cameras that are attached.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_VIRTUAL_PROVIDER_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_VIRTUAL_PROVIDER_H

#include "platform/cameras/provider.h"

namespace ostrel {
namespace cameras {

// One for the process. Lists the added cameras in the order of their adding.
std::shared_ptr<CameraProvider> virtualProvider();

// Thread-safe. False when an added camera has the identifier already.
bool addCamera(const std::shared_ptr<Camera>& camera);
void removeCamera(const std::shared_ptr<Camera>& camera);

} // namespace cameras
} // namespace ostrel

#endif
