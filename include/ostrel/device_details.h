// What is known of a camera's device; and the machine's video nodes, those that are no cameras among them,
// and why they are none (Linux).
#ifndef OSTREL_DEVICE_DETAILS_H
#define OSTREL_DEVICE_DETAILS_H

#include <ostrel/export.h>

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace ostrel {

struct OVideoDeviceDetailsPrivate;
struct OVideoNodePrivate;

// A camera, as it was when it was asked for. Texts are empty, and numbers 0, where there is nothing to say. A
// value, cheap to copy.
class OSTREL_EXPORT OVideoDeviceDetails {
public:
    explicit OVideoDeviceDetails(const QSharedPointer<OVideoDeviceDetailsPrivate>& facts); // the library does
    OVideoDeviceDetails(const OVideoDeviceDetails& other);
    OVideoDeviceDetails& operator=(const OVideoDeviceDetails& other);
    ~OVideoDeviceDetails();

    bool isAttached() const; // else nothing is known
    // By what it is captured from: "V4L2", "PipeWire", "AVFoundation", "virtual"; more may come.
    QString kind() const;
    QString node() const;   // "/dev/video0"; PipeWire's name for it
    QString driver() const; // of the kernel, "uvcvideo"
    QString bus() const;    // where it is plugged in, "0000:00:14.0-usb-2", "PCI:0000:03:00.0"
    // Of USB and PCI devices.
    int vendorID() const;
    int productID() const;
    QString serialNumber() const; // the maker's; many give a whole model the same

private:
    QSharedPointer<OVideoDeviceDetailsPrivate> d;
};

// Asks no hardware that is in use. Any thread may call.
OSTREL_EXPORT OVideoDeviceDetails videoDeviceDetails(const QString& uniqueID);

// One node, as it was when it was listed. A value, cheap to copy.
class OSTREL_EXPORT OVideoNode {
public:
    explicit OVideoNode(const QSharedPointer<OVideoNodePrivate>& facts); // the library makes them
    OVideoNode(const OVideoNode& other);
    OVideoNode& operator=(const OVideoNode& other);
    ~OVideoNode();

    QString path() const;     // "/dev/video0"; of a camera that only PipeWire has, "pipewire:" and its name
    QString name() const;     // never empty
    QString uniqueID() const; // the camera's, as videoDevices() has it; empty when the node is no camera
    // Why it is no camera, and what would help where something does; of a camera, what stands against its
    // use. One line in English; empty when all is well.
    QString reason() const;

private:
    QSharedPointer<OVideoNodePrivate> d;
};

// In the order of the nodes' numbers. Asks no hardware that is in use, and no USB camera that udev describes.
// Any thread may call.
OSTREL_EXPORT QList<OVideoNode> videoNodes();

} // namespace ostrel

#endif
