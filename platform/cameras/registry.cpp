#include "platform/cameras/registry.h"

#include "platform/cameras/change_watch.h"

#include <mutex>

namespace ostrel {
namespace cameras {

namespace {

struct Registry {
    std::mutex mutex;
    Providers providers = machineProviders();
};

// Never destroyed: delivery threads and clients' static objects may outlive every static destructor.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

template <typename Element>
void append(std::vector<Element>& all, const std::vector<Element>& more) {
    all.insert(all.end(), more.begin(), more.end());
}

} // namespace

// To be asked without the lock, as that may take a while.
Providers currentProviders() {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return r.providers;
}

std::vector<std::shared_ptr<Camera>> attachedCameras() {
    std::vector<std::shared_ptr<Camera>> result;
    for (const auto& provider : currentProviders())
        append(result, provider->list());
    return result;
}

std::shared_ptr<Camera> attachedCamera(const std::string& identifier) {
    for (const auto& camera : attachedCameras())
        if (camera->identifier() == identifier)
            return camera;
    return nullptr;
}

std::vector<NodeReport> machineNodes() {
    std::vector<NodeReport> result;
    for (const auto& provider : currentProviders())
        append(result, provider->nodes());
    return result;
}

Providers setProviders(Providers providers) {
    Registry& r = registry();
    {
        std::lock_guard<std::mutex> lock(r.mutex);
        r.providers.swap(providers);
    }
    changesHere().raise();
    return providers;
}

} // namespace cameras
} // namespace ostrel
