// The classes of ostrel/device_monitor.h, over the monitor of cameras.
#include <ostrel/device_monitor.h>

#include "base/monotonic_clock.h"
#include "base/qt_text.h"
#include "base/shared_object.h"
#include "platform/cameras/camera_monitor.h"

#include <memory>

namespace ostrel {

struct OVideoDeviceChangePrivate {
    cameras::CameraChange change;
};

struct OVideoDeviceMonitorPrivate {
    cameras::CameraMonitor monitor;
};

OVideoDeviceChange::OVideoDeviceChange(const QSharedPointer<OVideoDeviceChangePrivate>& facts) : d(facts) {}

OVideoDeviceChange::OVideoDeviceChange(const OVideoDeviceChange& other) = default;

OVideoDeviceChange& OVideoDeviceChange::operator=(const OVideoDeviceChange& other) = default;

OVideoDeviceChange::~OVideoDeviceChange() = default;

OVideoDeviceChange::Kind OVideoDeviceChange::kind() const {
    return d->change.added ? ADDED : REMOVED;
}

QString OVideoDeviceChange::uniqueID() const {
    return textOf(d->change.identifier);
}

QString OVideoDeviceChange::name() const {
    return textOf(d->change.name);
}

OVideoDeviceMonitor::OVideoDeviceMonitor() : d(new OVideoDeviceMonitorPrivate) {}

OVideoDeviceMonitor::~OVideoDeviceMonitor() {
    delete d;
}

QMap<QString, QString> OVideoDeviceMonitor::cameras() const {
    QMap<QString, QString> result;
    for (const auto& camera : d->monitor.cameras())
        result.insert(textOf(camera.first), textOf(camera.second));
    return result;
}

int OVideoDeviceMonitor::descriptor() const {
    return d->monitor.descriptor();
}

int OVideoDeviceMonitor::wait(int timeoutMs, QString* why) {
    const int64_t end = timeoutMs < 0 ? -1 : monotonicNanoseconds() + timeoutMs * NANOSECONDS_PER_MILLISECOND;
    if (d->monitor.waitUntil(end))
        return 1;
    if (d->monitor.descriptor() >= 0)
        return 0;
    if (why)
        *why = QString::fromLatin1(
            "Cameras cannot be waited for: the system has no descriptor left (ulimit -n)");
    return -1;
}

QList<OVideoDeviceChange> OVideoDeviceMonitor::take() {
    QList<OVideoDeviceChange> result;
    for (const cameras::CameraChange& change : d->monitor.changes()) {
        auto facts = std::make_unique<OVideoDeviceChangePrivate>();
        facts->change = change;
        result.append(OVideoDeviceChange(sharedObject(std::move(facts))));
    }
    d->monitor.accept();
    return result;
}

} // namespace ostrel
