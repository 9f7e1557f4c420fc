#include "platform/cameras/registry.h"

#include "platform/cameras/change_watch.h"

#include <algorithm>
#include <mutex>
#include <set>

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
    std::set<uint64_t> known;
    result.erase(std::remove_if(result.begin(), result.end(),
                                [&](const std::shared_ptr<Camera>& camera) {
                                    const std::vector<uint64_t> devices = camera->devices();
                                    const bool isKnown =
                                        std::any_of(devices.begin(), devices.end(), [&](uint64_t device) {
                                            return known.count(device) != 0;
                                        });
                                    known.insert(devices.begin(), devices.end());
                                    return isKnown;
                                }),
                 result.end());
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
    std::set<uint64_t> known; // the cameras that one kind has reported, which no other need report
    result.erase(std::remove_if(result.begin(), result.end(),
                                [&](const NodeReport& report) {
                                    return report.device != 0 && !report.identifier.empty() &&
                                           !known.insert(report.device).second;
                                }),
                 result.end());
    return result;
}

std::vector<std::shared_ptr<Backend>> waysTo(uint64_t device) {
    std::vector<std::shared_ptr<Backend>> result;
    for (const auto& provider : currentProviders())
        append(result, provider->waysTo(device));
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
