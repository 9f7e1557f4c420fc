#include <ostrel/devices.h>

#include "base/shared_object.h"
#include "devices/platform_listing.h"

#include <QtCore/QtAlgorithms>

#include <memory>

namespace ostrel {

namespace {

// The sizes of the three quality levels, in 32-bit B, G, R, A: every camera is offered with these, as each
// captured frame is delivered at exactly the size asked for.
const OVideoFormat OFFERED_FORMATS[] = {{4, 320, 240}, {4, 640, 480}, {4, 1280, 720}};
const int OFFERED_FORMAT_COUNT = sizeof(OFFERED_FORMATS) / sizeof(OFFERED_FORMATS[0]);

// Deletes its devices, also when an allocation fails half-way.
struct OwnedDevices {
    ~OwnedDevices() { qDeleteAll(list); }
    QList<OVideoDeviceUnix*> release() {
        QList<OVideoDeviceUnix*> released;
        released.swap(list);
        return released;
    }
    QList<OVideoDeviceUnix*> list;
};

} // namespace

QMap<QString, QString> videoDevices() {
    const std::vector<std::pair<std::string, std::string>> cameras = platformCameras();
    QMap<QString, QString> devices;
    for (std::size_t i = 0; i < cameras.size(); ++i)
        devices.insert(QString::fromUtf8(cameras[i].first.c_str()),
                       QString::fromUtf8(cameras[i].second.c_str()));
    return devices;
}

OVideoInfoUnix::OVideoInfoUnix() {}

OVideoInfoUnix::~OVideoInfoUnix() {}

QSharedPointer<OVideoInfoUnix> OVideoInfoUnix::ptr() {
    return sharedObject<OVideoInfoUnix>(std::unique_ptr<OVideoInfoUnix>(new OVideoInfoMacX));
}

struct OVideoInfoMacXPrivate {};

OVideoInfoMacX::OVideoInfoMacX() : d(new OVideoInfoMacXPrivate) {}

OVideoInfoMacX::~OVideoInfoMacX() {
    delete d;
    d = 0;
}

QList<OVideoDeviceUnix*> OVideoInfoMacX::devices() {
    OwnedDevices owned;
    const QMap<QString, QString> found = videoDevices();
    for (QMap<QString, QString>::const_iterator entry = found.begin(); entry != found.end(); ++entry) {
        std::unique_ptr<OVideoDeviceUnix> device(new OVideoDeviceUnix);
        device->setName(entry.value());
        device->setUniqueID(entry.key());
        deviceVideoFormats(device.get());
        owned.list.append(device.get());
        device.release();
    }
    return owned.release();
}

void OVideoInfoMacX::deviceVideoFormats(OVideoDeviceUnix* device) {
    for (int i = 0; i < OFFERED_FORMAT_COUNT; ++i)
        device->addVideoFormat(OFFERED_FORMATS[i]);
}

QSharedPointer<OVideoDeviceUnix> OVideoInfoMacX::deviceByID(const QString& id) {
    QSharedPointer<OVideoDeviceUnix> result;
    OwnedDevices owned;
    owned.list = devices();
    while (!owned.list.isEmpty()) {
        std::unique_ptr<OVideoDeviceUnix> device(owned.list.takeFirst());
        if (id.toLower() == device->uniqueID().toLower())
            result = sharedObject(std::move(device));
    }
    return result;
}

} // namespace ostrel
