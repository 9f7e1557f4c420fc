// The one PipeWire daemon whose cameras this process uses.
#ifndef OSTREL_PLATFORM_CAMERAS_PIPEWIRE_REMOTE_H
#define OSTREL_PLATFORM_CAMERAS_PIPEWIRE_REMOTE_H

#include "platform/cameras/change_watch.h"
#include "platform/cameras/pipewire/connection.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {
namespace pipewire {

// Thread-safe. A connection lives as long as somebody uses it, and is shared meanwhile: between two listings
// nothing stays open. One over a descriptor that was handed over lives until it is replaced, since it cannot
// be made anew.
class Remote {
public:
    // How long a daemon is waited for, and for how long it is left out when it did not answer. Nanoseconds;
    // changed by tests alone.
    inline static std::atomic<int64_t> timeout{100000000}, leftOutFor{5000000000};

    using Load = const Library* (*)();

    explicit Remote(Load load = systemLibrary) : load_(load) {}

    // A connection on which all that the daemon knows of its cameras has arrived. Null with errno set:
    // EHOSTDOWN no daemon, ENOPKG no libpipewire, ETIMEDOUT no answer now or lately, EPIPE what was handed
    // over has ended, or any other.
    std::shared_ptr<Connection> ask();
    // For who has one already and wants to know what has changed. 0 or errno, as above.
    int ask(Connection& connection);

    // A connection as it is, without waiting for what comes by it: null with errno set, as above.
    std::shared_ptr<Connection> connect();
    // Whether it did not answer lately, and is left out.
    bool isSilent() const;
    // Raised when it falls silent and when something was handed over; and by whoever hears of its cameras.
    ChangeSignal& changes() { return changes_; }

    // Takes the descriptor; -1: the session's daemon again. 0 or errno, and then everything is as before.
    int handOver(int descriptor, int64_t deadline);
    bool isHandedOver() const;

private:
    const Load load_;
    ChangeSignal changes_;
    std::atomic<int64_t> silentUntil_{0}; // of CLOCK_MONOTONIC
    mutable std::mutex mutex_; // of the rest; held while a connection is made, which waits for nobody
    std::weak_ptr<Connection> shared_;
    std::shared_ptr<Connection> given_;
};

// The one of this process.
const std::shared_ptr<Remote>& processRemote();

} // namespace pipewire
} // namespace cameras
} // namespace ostrel

#endif
