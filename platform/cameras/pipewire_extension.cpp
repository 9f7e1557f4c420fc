// The extension that tells of PipeWire and takes a connection to it.
#include <ostrel/pipewire.h>

#include "base/qt_text.h"
#include "base/shared_object.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/registry.h"

#ifdef OSTREL_PIPEWIRE
#include "base/monotonic_clock.h"
#include "platform/cameras/pipewire/daemon.h"
#include "platform/cameras/pipewire/remote.h"

#include <cerrno>
#include <fcntl.h>
#endif

#include <algorithm>
#include <memory>
#include <string>

namespace ostrel {

struct OVideoPipeWirePrivate {
    OVideoPipeWire::State state = OVideoPipeWire::NOT_BUILT;
    std::string where, version;
    bool hasSessionManager = false;
    int cameras = 0, otherSources = 0, addedCameras = 0;
};

#ifdef OSTREL_PIPEWIRE

namespace {

OVideoPipeWire::State stateOf(int error) {
    switch (error) {
    case 0:
        return OVideoPipeWire::CONNECTED;
    case ENOPKG:
        return OVideoPipeWire::NO_LIBRARY;
    case EHOSTDOWN:
    case EPIPE:
        return OVideoPipeWire::NO_DAEMON;
    default:
        return OVideoPipeWire::SILENT;
    }
}

std::string reasonOf(int error) {
    if (error == ENOPKG)
        return "libpipewire-0.3.so.0 is not on this machine";
    if (error == ETIMEDOUT)
        return "nobody answers at that descriptor as PipeWire does";
    return "PipeWire cannot use that descriptor: " + cameras::reason(error);
}

// Cameras that no other kind has.
int added() {
    const auto all = cameras::attachedCameras();
    return static_cast<int>(std::count_if(
        all.begin(), all.end(), [](const auto& camera) { return camera->details().kind == "PipeWire"; }));
}

void look(OVideoPipeWirePrivate& seen) {
    using namespace cameras::pipewire;
    const std::shared_ptr<Remote>& remote = processRemote();
    const bool handedOver = remote->isHandedOver();
    seen.where = handedOver ? "a descriptor" : daemonSockets().front();
    const std::shared_ptr<Connection> connection = remote->ask();
    seen.state = stateOf(connection ? 0 : errno);
    if (!connection)
        return;
    seen.version = connection->version();
    // Whose program may see cameras alone does not see who connects them.
    seen.hasSessionManager = handedOver || connection->hasSessionManager();
    seen.cameras = static_cast<int>(connection->cameras().size());
    seen.otherSources = connection->otherSources();
    seen.addedCameras = added();
}

} // namespace

bool setPipeWireRemote(int descriptor, QString* why) {
    int own = -1;
    if (descriptor >= 0) {
        own = ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        if (own < 0) {
            if (why)
                *why = textOf(reasonOf(errno));
            return false;
        }
    }
    const int error =
        cameras::pipewire::processRemote()->handOver(own, monotonicNanoseconds() + NANOSECONDS_PER_SECOND);
    if (error && why)
        *why = textOf(reasonOf(error));
    return error == 0;
}

#else

namespace {

void look(OVideoPipeWirePrivate&) {}

} // namespace

bool setPipeWireRemote(int, QString* why) {
    if (why)
        *why = textOf("this library was built without PipeWire");
    return false;
}

#endif

OVideoPipeWire::OVideoPipeWire() {
    auto seen = std::make_unique<OVideoPipeWirePrivate>();
    look(*seen);
    d = sharedObject(std::move(seen));
}

OVideoPipeWire::OVideoPipeWire(const OVideoPipeWire& other) = default;

OVideoPipeWire& OVideoPipeWire::operator=(const OVideoPipeWire& other) = default;

OVideoPipeWire::~OVideoPipeWire() = default;

OVideoPipeWire::State OVideoPipeWire::state() const {
    return d->state;
}

QString OVideoPipeWire::where() const {
    return textOf(d->where);
}

QString OVideoPipeWire::version() const {
    return textOf(d->version);
}

bool OVideoPipeWire::hasSessionManager() const {
    return d->hasSessionManager;
}

int OVideoPipeWire::cameras() const {
    return d->cameras;
}

int OVideoPipeWire::otherSources() const {
    return d->otherSources;
}

int OVideoPipeWire::addedCameras() const {
    return d->addedCameras;
}

} // namespace ostrel
