#include "platform/cameras/virtual/stored_controls.h"

#include "base/wake_descriptor.h"
#include "platform/cameras/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <set>

namespace ostrel {
namespace cameras {

struct StoredControls::State {
    std::mutex mutex; // of everything here and of the watches' own
    std::vector<Control> controls;
    std::vector<Watch*> watches;
    bool gone = false;
};

class StoredControls::Watch : public ControlWatch {
public:
    Watch(std::shared_ptr<State> state, std::string where)
        : state_(std::move(state)), where_(std::move(where)) {}
    ~Watch() override {
        const std::lock_guard<std::mutex> lock(state_->mutex);
        std::vector<Watch*>& all = state_->watches;
        all.erase(std::remove(all.begin(), all.end(), this), all.end());
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    bool valid() const { return wake_.valid(); }
    int descriptor() const override { return wake_.descriptor(); }

    Error take(std::vector<Control>& changed) override {
        const std::lock_guard<std::mutex> lock(state_->mutex);
        if (state_->gone)
            return unplugged(where_); // and stays readable
        wake_.clear();
        for (const Control& control : state_->controls)
            if (changed_.count(control.id))
                changed.push_back(control);
        changed_.clear();
        return Error();
    }

    // With the lock held.
    void tell(uint32_t id) {
        changed_.insert(id);
        wake();
    }
    void wake() const { wake_.set(); }

private:
    const std::shared_ptr<State> state_;
    const WakeDescriptor wake_;
    const std::string where_;
    std::set<uint32_t> changed_;
};

StoredControls::StoredControls(std::string where, std::vector<Control> controls)
    : where_(std::move(where)), state_(std::make_shared<State>()) {
    state_->controls = std::move(controls);
    for (Control& control : state_->controls) {
        control.value = control.defaultValue;
        control.hasValue = true;
    }
}

StoredControls::~StoredControls() {
    StoredControls::leave();
}

Error StoredControls::list(std::vector<Control>& controls) {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    if (state_->gone)
        return unplugged(where_);
    controls = state_->controls;
    return Error();
}

Error StoredControls::set(const std::vector<Control>& wanted) {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    if (state_->gone)
        return unplugged(where_);
    for (const Control& one : wanted)
        for (Control& control : state_->controls)
            if (control.id == one.id && control.value != one.value) {
                control.value = one.value;
                for (Watch* watch : state_->watches)
                    watch->tell(one.id);
            }
    return Error();
}

Error StoredControls::watch(std::unique_ptr<ControlWatch>& watch) {
    auto fresh = std::make_unique<Watch>(state_, where_);
    if (!fresh->valid())
        return controlsRefused(where_, EMFILE);
    const std::lock_guard<std::mutex> lock(state_->mutex);
    state_->watches.push_back(fresh.get());
    if (state_->gone)
        fresh->wake();
    watch = std::move(fresh);
    return Error();
}

void StoredControls::leave() {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    state_->gone = true;
    for (const Watch* watch : state_->watches)
        watch->wake();
}

int64_t StoredControls::value(uint32_t id) const {
    const std::lock_guard<std::mutex> lock(state_->mutex);
    for (const Control& control : state_->controls)
        if (control.id == id)
            return control.value;
    return 0;
}

} // namespace cameras
} // namespace ostrel
