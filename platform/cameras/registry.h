// Which cameras there are: the machine's own, asked afresh on each listing, and those that were added.
#ifndef OSTREL_PLATFORM_CAMERAS_REGISTRY_H
#define OSTREL_PLATFORM_CAMERAS_REGISTRY_H

#include "platform/cameras/camera.h"

#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// Finds the cameras of one kind. list() is called from any thread.
class CameraProvider {
public:
    virtual ~CameraProvider() = default;
    // A new object for every attached camera, or the same object as before: what is already open stays in
    // use under its identifier either way.
    virtual std::vector<std::shared_ptr<Camera>> list() = 0;
};

// Every attached camera: the machine's own in the provider's order, then the added ones in the order of their
// adding. Thread-safe, as is everything here.
std::vector<std::shared_ptr<Camera>> attachedCameras();

// False when an added camera has the identifier already.
bool addCamera(const std::shared_ptr<Camera>& camera);
void removeCamera(const std::shared_ptr<Camera>& camera);

// Replaces the provider of the machine's own cameras (V4L2, unless a test says otherwise) and returns the one
// before; null means none.
std::shared_ptr<CameraProvider> setMachineProvider(const std::shared_ptr<CameraProvider>& provider);

} // namespace cameras
} // namespace ostrel

#endif
