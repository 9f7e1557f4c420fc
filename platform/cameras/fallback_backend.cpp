#include "platform/cameras/fallback_backend.h"

#include "platform/cameras/messages.h"
#include "platform/cameras/registry.h"

#include <cerrno>

namespace ostrel {
namespace cameras {

namespace {

bool mayBeHadElsewhere(const Error& refused) {
    return refused.code == EBUSY || refused.code == EACCES || refused.code == EPERM;
}

} // namespace

FallbackBackend::FallbackBackend(std::shared_ptr<Backend> first, uint64_t device)
    : first_(std::move(first)), device_(device) {}

// The first of the other ways that opens and can be used; without any the refusal stays as it is.
template <typename Use>
Error FallbackBackend::tryOthers(Error refused, Use use) {
    const Error first = refused;
    for (const std::shared_ptr<Backend>& way : waysTo(device_)) {
        Error other = way->open();
        if (!other) {
            other = use(*way);
            if (!other) {
                other_ = way;
                return Error();
            }
            way->close();
        }
        refused = refusedByBothWays(first, other);
    }
    return refused;
}

Error FallbackBackend::open() {
    const Error refused = first_->open();
    firstIsOpen_ = !refused;
    if (!mayBeHadElsewhere(refused))
        return refused;
    return tryOthers(refused, [](Backend&) { return Error(); });
}

void FallbackBackend::close() {
    if (other_)
        other_->close();
    other_.reset();
    if (firstIsOpen_)
        first_->close();
    firstIsOpen_ = false;
}

Error FallbackBackend::modes(NativeModes& modes) {
    if (other_)
        return other_->modes(modes);
    const Error refused = first_->modes(modes);
    if (!mayBeHadElsewhere(refused))
        return refused;
    const Error untold = tryOthers(refused, [&modes](Backend& way) { return way.modes(modes); });
    if (other_)
        other_->close();
    other_.reset();
    return untold;
}

Error FallbackBackend::start(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    const std::shared_ptr<Backend>& open = firstIsOpen_ ? first_ : other_;
    Error refused = open->start(request, outlet);
    if (!refused) {
        running_ = open;
        return refused;
    }
    if (!firstIsOpen_ || !mayBeHadElsewhere(refused))
        return refused;
    refused = tryOthers(refused, [&](Backend& way) { return way.start(request, outlet); });
    if (!refused)
        running_ = other_;
    return refused;
}

void FallbackBackend::stop() {
    running_->stop();
    stopped();
}

void FallbackBackend::stopped() {
    running_.reset();
    if (!firstIsOpen_ || !other_)
        return; // what is open is the only one
    other_->close();
    other_.reset();
}

Error FallbackBackend::restart(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    Error refused = running_->restart(request, outlet);
    if (refused)
        stopped();
    return refused;
}

Error FallbackBackend::next(const StopSignal& stop, Arrival& arrival) {
    return running_->next(stop, arrival);
}

} // namespace cameras
} // namespace ostrel
