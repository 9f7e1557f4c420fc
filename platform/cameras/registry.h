// Which cameras there are: those of every kind that the machine has.
#ifndef OSTREL_PLATFORM_CAMERAS_REGISTRY_H
#define OSTREL_PLATFORM_CAMERAS_REGISTRY_H

#include "platform/cameras/provider.h"

namespace ostrel {
namespace cameras {

// Every attached camera, kind after kind in the order of the providers. What is behind the same device node
// as one before it is that camera, and left out. Thread-safe, as is everything here.
std::vector<std::shared_ptr<Camera>> attachedCameras();

// The one with this identifier; null when there is none.
std::shared_ptr<Camera> attachedCamera(const std::string& identifier);

// What every provider says of its devices, cameras or not; of a camera that several have, the first.
std::vector<NodeReport> machineNodes();

// Every way that any kind has to the camera behind a device node (st_rdev).
std::vector<std::shared_ptr<Backend>> waysTo(uint64_t device);

// The kinds of this machine; the one place that names them is platform/machine.cpp.
Providers machineProviders();

// Those that list the cameras at present: the machine's, where nobody has replaced them.
Providers currentProviders();

// Replaces the machine's providers and returns the ones before. Monitors follow.
Providers setProviders(Providers providers);

} // namespace cameras
} // namespace ostrel

#endif
