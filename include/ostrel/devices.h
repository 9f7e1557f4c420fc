// Listing the cameras of the machine.
#ifndef OSTREL_DEVICES_H
#define OSTREL_DEVICES_H

#include <ostrel/export.h>

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <stdint.h>

namespace ostrel {

// One capture format. formatId 4 stands for 32-bit B, G, R, A.
struct OVideoFormat {
    int32_t formatId;
    int32_t width;  // pixels
    int32_t height; // pixels
};

struct OVideoDeviceUnixPrivate;

// One camera: a record that its owner fills and reads; nothing is checked. Bound to one thread at a time.
class OSTREL_EXPORT OVideoDeviceUnix {
public:
    OVideoDeviceUnix(); // all fields empty
    virtual ~OVideoDeviceUnix();

    QString name(); // for people
    void setName(const QString& name);
    QString uniqueID(); // the key by which the camera is looked up and captured from
    void setUniqueID(const QString& uniqueID);
    QString deviceFile(); // not set by the enumeration
    void setDeviceFile(const QString& deviceFile);

    // The formats in the order they were added; a copy that later changes do not touch.
    QList<OVideoFormat> videoFormats();
    void setVideoFormats(QList<OVideoFormat>& formats); // replaces the list
    void addVideoFormat(OVideoFormat format);           // appends; repeated formats are kept

    // Always empty; the argument is not looked at.
    QMap<int, OVideoFormat> videoFormats(OVideoDeviceUnix* device);

private:
    Q_DISABLE_COPY(OVideoDeviceUnix)
    OVideoDeviceUnixPrivate* d;
};

// Identifier -> display name of every attached camera, asked of the system afresh on each call; the caller
// owns the map. Of cameras with the same identifier the one listed last wins. Any thread may call.
OSTREL_EXPORT QMap<QString, QString> videoDevices();

// Enumeration and lookup. Objects keep no state: any thread may call, and nothing is cached.
class OSTREL_EXPORT OVideoInfoUnix {
public:
    OVideoInfoUnix();
    virtual ~OVideoInfoUnix();

    // A new object on every call, owned by the pointer.
    static QSharedPointer<OVideoInfoUnix> ptr();

    // Every attached camera in ascending order of its identifier, each with the library's three formats
    // (320 x 240, 640 x 480, 1280 x 720). The caller owns the devices and deletes them.
    virtual QList<OVideoDeviceUnix*> devices() = 0;

    // The camera whose identifier equals the given one, letter case ignored; null when there is none. Of
    // several that match, the last in order.
    virtual QSharedPointer<OVideoDeviceUnix> deviceByID(const QString& id) = 0;

private:
    Q_DISABLE_COPY(OVideoInfoUnix)
};

struct OVideoInfoMacXPrivate;

class OSTREL_EXPORT OVideoInfoMacX : public OVideoInfoUnix {
public:
    OVideoInfoMacX();
    ~OVideoInfoMacX();

    QList<OVideoDeviceUnix*> devices();
    QSharedPointer<OVideoDeviceUnix> deviceByID(const QString& id);

    // Appends the library's three formats to the device, which must not be null.
    void deviceVideoFormats(OVideoDeviceUnix* device);

private:
    Q_DISABLE_COPY(OVideoInfoMacX)
    OVideoInfoMacXPrivate* d;
};

} // namespace ostrel

#endif
