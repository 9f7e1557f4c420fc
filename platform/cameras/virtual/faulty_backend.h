// A camera that can be told to fail, whatever kind it is.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_FAULTY_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_FAULTY_BACKEND_H

#include <ostrel/virtual_camera.h>

#include "platform/cameras/backend.h"

#include <atomic>
#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

using Fault = std::atomic<VIRTUAL_CAMERA_FAULT>;

// Does what the other backend does, but for the fault that is set at that moment.
class FaultyBackend : public Backend {
public:
    FaultyBackend(std::shared_ptr<Backend> backend, std::shared_ptr<Fault> fault, std::string name)
        : backend_(std::move(backend)), fault_(std::move(fault)), name_(std::move(name)) {}

    bool attached() const override { return backend_->attached(); }
    bool mayBeOpened() const override { return backend_->mayBeOpened(); }
    Error open() override;
    void close() override { backend_->close(); }
    Error modes(NativeModes& modes) override { return backend_->modes(modes); }
    std::shared_ptr<Controls> controls() const override { return backend_->controls(); }
    Error admitInput() override;
    Error admitOutput() override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override { backend_->stop(); }
    bool canServeBetter(const Request& request) override { return backend_->canServeBetter(request); }
    Error restart(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    const char* threadName() const override { return backend_->threadName(); }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    int64_t longestPause() override { return backend_->longestPause(); }

private:
    class FaultyOutlet;
    bool told(VIRTUAL_CAMERA_FAULT which) const { return fault_->load(std::memory_order_relaxed) == which; }

    const std::shared_ptr<Backend> backend_;
    const std::shared_ptr<Fault> fault_;
    const std::string name_; // for messages
};

} // namespace cameras
} // namespace ostrel

#endif
