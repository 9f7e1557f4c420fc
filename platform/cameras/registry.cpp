#include "platform/cameras/registry.h"

#include "platform/cameras/v4l2/v4l2_provider.h"

#include <algorithm>
#include <mutex>

namespace ostrel {
namespace cameras {

namespace {

struct Registry {
    std::mutex mutex;
    std::shared_ptr<CameraProvider> machine = v4l2::makeProvider();
    std::vector<std::shared_ptr<Camera>> added;
};

// Never destroyed: delivery threads and clients' static objects may outlive every static destructor.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

} // namespace

std::vector<std::shared_ptr<Camera>> attachedCameras() {
    Registry& r = registry();
    std::shared_ptr<CameraProvider> machine;
    {
        std::lock_guard<std::mutex> lock(r.mutex);
        machine = r.machine;
    }
    // Asking the system may take a while and needs no lock.
    std::vector<std::shared_ptr<Camera>> result;
    if (machine)
        result = machine->list();
    std::lock_guard<std::mutex> lock(r.mutex);
    result.insert(result.end(), r.added.begin(), r.added.end());
    return result;
}

bool addCamera(const std::shared_ptr<Camera>& camera) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    const std::string identifier = camera->identifier();
    for (const auto& other : r.added)
        if (other->identifier() == identifier)
            return false;
    r.added.push_back(camera);
    return true;
}

void removeCamera(const std::shared_ptr<Camera>& camera) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.added.erase(std::remove(r.added.begin(), r.added.end(), camera), r.added.end());
}

std::shared_ptr<CameraProvider> setMachineProvider(const std::shared_ptr<CameraProvider>& provider) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    std::shared_ptr<CameraProvider> before = r.machine;
    r.machine = provider;
    return before;
}

} // namespace cameras
} // namespace ostrel
