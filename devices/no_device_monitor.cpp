// Where the system brings its own QTKit nobody tells of cameras that come and go.
#include <ostrel/device_monitor.h>

namespace ostrel {

struct OVideoDeviceChangePrivate {};
struct OVideoDeviceMonitorPrivate {};

OVideoDeviceChange::OVideoDeviceChange(const QSharedPointer<OVideoDeviceChangePrivate>& facts) : d(facts) {}
OVideoDeviceChange::OVideoDeviceChange(const OVideoDeviceChange& other) : d(other.d) {}
OVideoDeviceChange& OVideoDeviceChange::operator=(const OVideoDeviceChange& other) {
    d = other.d;
    return *this;
}
OVideoDeviceChange::~OVideoDeviceChange() {}
OVideoDeviceChange::Kind OVideoDeviceChange::kind() const {
    return REMOVED;
}
QString OVideoDeviceChange::uniqueID() const {
    return QString();
}
QString OVideoDeviceChange::name() const {
    return QString();
}

OVideoDeviceMonitor::OVideoDeviceMonitor() : d(0) {}
OVideoDeviceMonitor::~OVideoDeviceMonitor() {
    (void)d; // nothing ever is behind it
}
QMap<QString, QString> OVideoDeviceMonitor::cameras() const {
    return QMap<QString, QString>();
}
int OVideoDeviceMonitor::descriptor() const {
    return -1;
}
int OVideoDeviceMonitor::wait(int, QString* why) {
    if (why)
        *why = QString::fromLatin1("Cameras cannot be waited for with this system's own QTKit: list them");
    return -1;
}
QList<OVideoDeviceChange> OVideoDeviceMonitor::take() {
    return QList<OVideoDeviceChange>();
}

} // namespace ostrel
