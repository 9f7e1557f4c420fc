#include "platform/cameras/change_watch.h"

#include "base/wake_descriptor.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace ostrel {
namespace cameras {

struct ChangeSignal::Watches {
    std::mutex mutex;
    std::vector<Watch*> all;
};

class ChangeSignal::Watch : public ChangeWatch {
public:
    explicit Watch(const std::shared_ptr<Watches>& watches) : watches_(watches) {
        std::lock_guard<std::mutex> lock(watches_->mutex);
        watches_->all.push_back(this);
    }
    ~Watch() override {
        std::lock_guard<std::mutex> lock(watches_->mutex);
        watches_->all.erase(std::find(watches_->all.begin(), watches_->all.end(), this));
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    int descriptor() const override { return wake_.descriptor(); }
    bool changed() override { return wake_.clear(); }

    void wake() { wake_.set(); }

private:
    const std::shared_ptr<Watches> watches_;
    const WakeDescriptor wake_;
};

ChangeSignal::ChangeSignal() : watches_(std::make_shared<Watches>()) {}

std::unique_ptr<ChangeWatch> ChangeSignal::watch() {
    return std::make_unique<Watch>(watches_);
}

void ChangeSignal::raise() noexcept {
    std::lock_guard<std::mutex> lock(watches_->mutex);
    for (Watch* watch : watches_->all)
        watch->wake();
}

ChangeSignal& changesHere() {
    // Never destroyed: clients' static objects may outlive every static destructor.
    static ChangeSignal* const instance = new ChangeSignal;
    return *instance;
}

} // namespace cameras
} // namespace ostrel
