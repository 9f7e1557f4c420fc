#include <ostrel/devices.h>

namespace ostrel {

struct OVideoDeviceUnixPrivate {
    QString name;
    QString uniqueID;
    QList<OVideoFormat> videoFormats;
    QString deviceFile;
};

OVideoDeviceUnix::OVideoDeviceUnix() : d(new OVideoDeviceUnixPrivate) {}

OVideoDeviceUnix::~OVideoDeviceUnix() {
    delete d;
    d = 0;
}

QString OVideoDeviceUnix::name() {
    return d->name;
}

void OVideoDeviceUnix::setName(const QString& name) {
    d->name = name;
}

QString OVideoDeviceUnix::uniqueID() {
    return d->uniqueID;
}

void OVideoDeviceUnix::setUniqueID(const QString& uniqueID) {
    d->uniqueID = uniqueID;
}

QString OVideoDeviceUnix::deviceFile() {
    return d->deviceFile;
}

void OVideoDeviceUnix::setDeviceFile(const QString& deviceFile) {
    d->deviceFile = deviceFile;
}

QList<OVideoFormat> OVideoDeviceUnix::videoFormats() {
    return d->videoFormats;
}

void OVideoDeviceUnix::setVideoFormats(QList<OVideoFormat>& formats) {
    d->videoFormats = formats;
}

void OVideoDeviceUnix::addVideoFormat(OVideoFormat format) {
    d->videoFormats.append(format);
}

QMap<int, OVideoFormat> OVideoDeviceUnix::videoFormats(OVideoDeviceUnix*) {
    return QMap<int, OVideoFormat>();
}

} // namespace ostrel
