#include "platform/cameras/virtual/virtual_provider.h"

#include "platform/cameras/change_watch.h"

#include <algorithm>
#include <mutex>

namespace ostrel {
namespace cameras {

namespace {

class VirtualProvider : public CameraProvider {
public:
    std::vector<std::shared_ptr<Camera>> list() override {
        std::lock_guard<std::mutex> lock(mutex_);
        return added_;
    }

    bool add(const std::shared_ptr<Camera>& camera) {
        const std::string identifier = camera->identifier();
        std::lock_guard<std::mutex> lock(mutex_);
        for (const auto& other : added_)
            if (other->identifier() == identifier)
                return false;
        added_.push_back(camera);
        changesHere().raise();
        return true;
    }

    void remove(const std::shared_ptr<Camera>& camera) {
        std::lock_guard<std::mutex> lock(mutex_);
        added_.erase(std::remove(added_.begin(), added_.end(), camera), added_.end());
        changesHere().raise();
    }

private:
    std::mutex mutex_;
    std::vector<std::shared_ptr<Camera>> added_;
};

const std::shared_ptr<VirtualProvider>& instance() {
    // Never destroyed: clients' static objects may outlive every static destructor.
    static const auto* const provider =
        new std::shared_ptr<VirtualProvider>(std::make_shared<VirtualProvider>());
    return *provider;
}

} // namespace

std::shared_ptr<CameraProvider> virtualProvider() {
    return instance();
}

bool addCamera(const std::shared_ptr<Camera>& camera) {
    return instance()->add(camera);
}

void removeCamera(const std::shared_ptr<Camera>& camera) {
    instance()->remove(camera);
}

} // namespace cameras
} // namespace ostrel
