// A camera that can be had in other ways when its first one is in use or not permitted.
#ifndef OSTREL_PLATFORM_CAMERAS_FALLBACK_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_FALLBACK_BACKEND_H

#include "platform/cameras/backend.h"

#include <cstdint>
#include <memory>

namespace ostrel {
namespace cameras {

// Does what the first backend does for as long as that is not refused with EBUSY, EACCES or EPERM. Then every
// kind is asked for another way to the device; each start begins with the first again.
class FallbackBackend final : public Backend {
public:
    // device: the number (st_rdev) of the first way's node.
    FallbackBackend(std::shared_ptr<Backend> first, uint64_t device);

    bool attached() const override { return first_->attached(); }
    bool mayBeOpened() const override { return first_->mayBeOpened(); }
    Error open() override;
    void close() override;
    Error admitInput() override { return first_->admitInput(); }
    Error admitOutput() override { return first_->admitOutput(); }
    std::shared_ptr<Controls> controls() const override { return first_->controls(); }
    Error modes(NativeModes& modes) override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    bool canServeBetter(const Request& request) override { return running_->canServeBetter(request); }
    Error restart(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    const char* threadName() const override { return running_ ? running_->threadName() : nullptr; }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    int64_t longestPause() override { return running_->longestPause(); }

private:
    template <typename Use>
    Error tryOthers(Error refused, Use use);
    void stopped();

    const std::shared_ptr<Backend> first_;
    const uint64_t device_;
    bool firstIsOpen_ = false;
    std::shared_ptr<Backend> other_;   // that is open in the place of the first, or beside it
    std::shared_ptr<Backend> running_; // one of the two
};

} // namespace cameras
} // namespace ostrel

#endif
