// Being told that cameras came and went, instead of listing them again and again (Linux; where the system
// brings its own QTKit nothing is told, and wait() says so).
#ifndef OSTREL_DEVICE_MONITOR_H
#define OSTREL_DEVICE_MONITOR_H

#include <ostrel/export.h>

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace ostrel {

struct OVideoDeviceChangePrivate;
struct OVideoDeviceMonitorPrivate;

// One camera that came or went. A value, cheap to copy; each copy is bound to one thread at a time.
class OSTREL_EXPORT OVideoDeviceChange {
public:
    enum Kind { ADDED = 1, REMOVED = 2 };

    explicit OVideoDeviceChange(const QSharedPointer<OVideoDeviceChangePrivate>& facts); // the library does
    OVideoDeviceChange(const OVideoDeviceChange& other);
    OVideoDeviceChange& operator=(const OVideoDeviceChange& other);
    ~OVideoDeviceChange();

    Kind kind() const;
    QString uniqueID() const; // as videoDevices() has it
    QString name() const;

private:
    QSharedPointer<OVideoDeviceChangePrivate> d;
};

// Compares the machine's cameras, virtual ones included, with those that its owner knows of. It tells what
// became of each camera, not of each moment in between: however much happens before the owner asks, the list
// stays short and its end is right.
//
//  - A camera is ADDED as soon as this process may open it, which can be a moment after it was plugged in.
//    One that it may never open is never added, though videoDevices() lists it. Another program's using it
//    does not matter.
//  - It is REMOVED once it has left the machine; while it is captured from, at once. One that left and came
//    back in the meantime is both, in this order: captures of it have ended. One that came and left in the
//    meantime is neither.
//  - Without udev (in most containers), and for loopback devices, whose becoming a camera nobody tells of,
//    it looks once a second.
//
// Any number of monitors may live at once. Each may be used on any thread, by one at a time. It has no thread
// of its own; where PipeWire runs, the library keeps a connection to it meanwhile, which has. After fork()
// the child may do no more with it than destroy it.
class OSTREL_EXPORT OVideoDeviceMonitor {
public:
    OVideoDeviceMonitor(); // lists the cameras
    ~OVideoDeviceMonitor();

    // Identifier -> name of the cameras that its owner knows of: at first those that were there at the
    // construction, then changed by what each take() returned.
    QMap<QString, QString> cameras() const;

    // For poll(), epoll or QSocketNotifier, to wait for reading only: readable while there may be something
    // to take. That may turn out to be nothing; the next take() makes it quiet again. Belongs to the monitor,
    // valid as long as it. -1 when the system has none left: take() then looks each time.
    int descriptor() const;

    // Waits until something has changed.
    //
    //    1   take() will say what
    //    0   the time is over: timeoutMs milliseconds; negative waits for ever
    //   -1   nothing can be waited for; why, which may be null, says it
    //
    // Signals do not end it. It may take as long as videoDevices() beyond its time.
    int wait(int timeoutMs, QString* why = 0);

    // What has changed since the take() before, at first since the construction: removals, then additions.
    // Empty, after one system call, when nothing has. Otherwise lists the cameras, as videoDevices() does.
    // Throws std::bad_alloc, and loses nothing by it.
    QList<OVideoDeviceChange> take();

private:
    Q_DISABLE_COPY(OVideoDeviceMonitor)
    OVideoDeviceMonitorPrivate* d;
};

} // namespace ostrel

#endif
