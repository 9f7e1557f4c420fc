#include "platform/cameras/change_watch.h"

#include <algorithm>
#include <mutex>
#include <sys/eventfd.h>
#include <unistd.h>
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
        descriptor_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    }
    ~Watch() override {
        std::lock_guard<std::mutex> lock(watches_->mutex);
        watches_->all.erase(std::find(watches_->all.begin(), watches_->all.end(), this));
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    int descriptor() const override { return descriptor_; }
    bool changed() override {
        eventfd_t count = 0;
        return ::eventfd_read(descriptor_, &count) == 0;
    }

    void wake() { ::eventfd_write(descriptor_, 1); }

private:
    const std::shared_ptr<Watches> watches_;
    int descriptor_ = -1;
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
