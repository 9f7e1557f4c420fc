#include "platform/cameras/registry.h"

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

} // namespace

std::vector<std::shared_ptr<Camera>> attachedCameras() {
    Registry& r = registry();
    Providers providers;
    {
        std::lock_guard<std::mutex> lock(r.mutex);
        providers = r.providers;
    }
    // Asking the system may take a while and needs no lock.
    std::vector<std::shared_ptr<Camera>> result;
    for (const auto& provider : providers) {
        const std::vector<std::shared_ptr<Camera>> found = provider->list();
        result.insert(result.end(), found.begin(), found.end());
    }
    return result;
}

Providers setProviders(Providers providers) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.providers.swap(providers);
    return providers;
}

} // namespace cameras
} // namespace ostrel
