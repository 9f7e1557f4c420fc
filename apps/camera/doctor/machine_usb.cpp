// The USB devices that say that they are cameras, whether the kernel has made video nodes of them or not.
#include "apps/camera/doctor/machine.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace ostrel::apps::cli::doctor {

namespace {

// A device of this class may have several interfaces; one of them controls it.
const char VIDEO_CLASS[] = "0e";
const char CONTROL_SUBCLASS[] = "01";

QString attribute(const QString& folder, const char* name) {
    QFile file(folder + "/" + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

QString nameOf(const QString& device) {
    const QString product = attribute(device, "product");
    return product.isEmpty() ? attribute(device, "idVendor") + ":" + attribute(device, "idProduct") : product;
}

} // namespace

std::vector<UsbVideo> usbVideoDevices(const std::string& root) {
    const QString folder = QString::fromStdString(root) + "/sys/bus/usb/devices";
    std::vector<UsbVideo> devices;
    const QStringList entries = QDir(folder).entryList({"*:*"}, QDir::Dirs, QDir::Name); // "1-3.2:1.0"
    for (const QString& entry : entries) {
        const QString interface = folder + "/" + entry;
        if (attribute(interface, "bInterfaceClass") != VIDEO_CLASS ||
            attribute(interface, "bInterfaceSubClass") != CONTROL_SUBCLASS)
            continue;
        const QString port = entry.section(':', 0, 0);
        const QFileInfo driver(QFileInfo(interface + "/driver").canonicalFilePath());
        devices.push_back(
            {nameOf(folder + "/" + port).toStdString(), port.toStdString(), driver.fileName().toStdString()});
    }
    return devices;
}

} // namespace ostrel::apps::cli::doctor
