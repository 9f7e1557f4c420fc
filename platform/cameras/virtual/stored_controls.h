// The controls of a virtual camera: values in memory.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_STORED_CONTROLS_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_STORED_CONTROLS_H

#include "platform/cameras/controls.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// Thread-safe. Gone once leave() was called.
class StoredControls final : public Controls {
public:
    // Each has its default value at first.
    StoredControls(std::string where, std::vector<Control> controls);
    ~StoredControls() override;

    const std::string& where() const override { return where_; }
    Error list(std::vector<Control>& controls) override;
    Error set(const std::vector<Control>& wanted) override;
    Error watch(std::unique_ptr<ControlWatch>& watch) override;
    void leave() override;

    int64_t value(uint32_t id) const; // of a control that there is

private:
    class Watch;
    struct State;
    const std::string where_;
    const std::shared_ptr<State> state_; // watches may outlive the camera
};

} // namespace cameras
} // namespace ostrel

#endif
