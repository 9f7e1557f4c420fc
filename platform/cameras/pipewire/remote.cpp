#include "platform/cameras/pipewire/remote.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pipewire/daemon.h"

#include <cerrno>
#include <unistd.h>

namespace ostrel {
namespace cameras {
namespace pipewire {

std::shared_ptr<Connection> Remote::ask() {
    int error = 0;
    std::shared_ptr<Connection> connection = this->connection(error);
    if (connection)
        error = ask(*connection);
    if (!error)
        return connection;
    connection.reset();
    errno = error;
    return nullptr;
}

int Remote::ask(Connection& connection) {
    const int64_t now = monotonicNanoseconds();
    if (now < silentUntil_)
        return ETIMEDOUT;
    const int error = connection.settle(now + patience);
    if (error == ETIMEDOUT)
        silentUntil_ = monotonicNanoseconds() + kLeftOutFor;
    return error;
}

std::shared_ptr<Connection> Remote::connection(int& error) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (given_) {
        error = given_->isOver() ? EPIPE : 0;
        return error ? nullptr : given_;
    }
    if (monotonicNanoseconds() < silentUntil_) {
        error = ETIMEDOUT;
        return nullptr;
    }
    std::shared_ptr<Connection> shared = shared_.lock();
    if (shared && !shared->isOver())
        return shared;
    const int descriptor = connectToDaemon();
    if (descriptor < 0) {
        error = -descriptor;
        return nullptr;
    }
    const Library* const library = load_();
    if (!library) {
        ::close(descriptor);
        error = ENOPKG;
        return nullptr;
    }
    shared = Connection::make(*library, descriptor);
    if (!shared)
        error = errno;
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
    const std::lock_guard<std::mutex> lock(mutex_);
    given_.swap(given);
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
