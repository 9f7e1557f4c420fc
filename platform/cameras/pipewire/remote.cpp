#include "platform/cameras/pipewire/remote.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pipewire/daemon.h"

#include <cerrno>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

std::shared_ptr<Connection> Remote::ask() {
    std::shared_ptr<Connection> connection = connect();
    if (!connection)
        return nullptr;
    const int error = ask(*connection);
    if (!error)
        return connection;
    connection.reset();
    errno = error;
    return nullptr;
}

int Remote::ask(Connection& connection) {
    if (isSilent())
        return ETIMEDOUT;
    const int error = connection.settle(monotonicNanoseconds() + timeout);
    if (error == ETIMEDOUT) {
        silentUntil_ = monotonicNanoseconds() + leftOutFor;
        changes_.raise();
    }
    return error;
}

bool Remote::isSilent() const {
    return monotonicNanoseconds() < silentUntil_;
}

std::shared_ptr<Connection> Remote::connect() {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (given_) {
        errno = EPIPE;
        return given_->isOver() ? nullptr : given_;
    }
    if (isSilent()) {
        errno = ETIMEDOUT;
        return nullptr;
    }
    std::shared_ptr<Connection> shared = shared_.lock();
    if (shared && !shared->isOver())
        return shared;
    const int descriptor = connectToDaemon();
    if (descriptor < 0) {
        errno = -descriptor;
        return nullptr;
    }
    const Library* const library = load_();
    if (!library) {
        ::close(descriptor);
        errno = ENOPKG;
        return nullptr;
    }
    shared = Connection::make(*library, descriptor);
    shared_ = shared;
    return shared;
}

int Remote::handOver(int descriptor, int64_t deadline) {
    std::shared_ptr<Connection> given;
    if (descriptor >= 0) {
        const Library* const library = load_();
        if (!library) {
            ::close(descriptor);
            return ENOPKG;
        }
        given = Connection::make(*library, descriptor);
        if (!given)
            return errno;
        if (const int error = given->settle(deadline))
            return error;
    }
    silentUntil_ = 0;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        given_.swap(given);
    }
    changes_.raise();
    return 0;
}

bool Remote::isHandedOver() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return given_ != nullptr;
}

// Never destroyed: delivery threads and clients' static objects may outlive every static destructor.
const std::shared_ptr<Remote>& processRemote() {
    static const auto* const remote = new std::shared_ptr<Remote>(std::make_shared<Remote>());
    return *remote;
}

} // namespace pipewire
} // namespace cameras
} // namespace ostrel
