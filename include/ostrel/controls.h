// A camera's own controls: brightness, exposure, focus and the like (over the system's own QTKit there are
// none).
#ifndef OSTREL_CONTROLS_H
#define OSTREL_CONTROLS_H

#include <ostrel/export.h>

#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <stdint.h>

namespace ostrel {

struct OVideoControlPrivate;
struct OVideoControlWatchPrivate;

// One control, as it was when it was listed, or with a value that it is to be given. A value: cheap to copy,
// copies are independent, each is bound to one thread at a time.
//
// Numbers and units are V4L2's: exposure times in 100 microseconds, white balance in kelvin, pan and tilt in
// seconds of arc (3600 a degree), 0 and 1 for booleans; most others have no unit.
class OSTREL_EXPORT OVideoControl {
public:
    enum Type { // V4L2's numbers; more may come
        INTEGER = 1,
        BOOLEAN = 2,
        MENU = 3,
        BUTTON = 4, // has no value; setting it, to anything, presses it
        INTEGER64 = 5,
        TEXT = 7,        // minimum and maximum are those of its length
        BITMASK = 8,     // maximum has all the bits that there are
        INTEGER_MENU = 9 // a menu whose items are numbers
    };

    explicit OVideoControl(uint32_t id = 0); // for setting: only id, value and text count there
    OVideoControl(const OVideoControl& other);
    OVideoControl& operator=(const OVideoControl& other);
    ~OVideoControl();

    uint32_t id() const;  // V4L2_CID_...
    QString name() const; // the driver's own, for people: "White Balance, Automatic"; differs between kernels
    Type type() const;
    int64_t minimum() const;
    int64_t maximum() const;
    int64_t step() const;
    int64_t defaultValue() const;
    // Of menus: the items that there are by their values. Between minimum and maximum some may be missing.
    QMap<int, QString> items() const;

    // False of buttons, of what can only be written, and where the camera would not tell.
    bool hasValue() const;
    int64_t value() const;
    QString text() const; // of TEXT

    // Another setting has the say for the time being: an automatic one, mostly.
    bool isInactive() const;
    // The automatic control of the same camera that may have the say over this one; 0: none is known. Where
    // there are several, the one that has it.
    uint32_t automaticControl() const;
    bool isReadOnly() const;
    // The camera changes it by itself, so that no watch tells: read it again.
    bool isVolatile() const;
    // Cannot be set for now: in use, mostly while the camera streams.
    bool isGrabbed() const;

    void setValue(int64_t value);
    void setText(const QString& text);

private:
    friend struct OVideoControlPrivate;
    QSharedPointer<OVideoControlPrivate> d;
};

// The calls below reach the hardware, also while the camera is captured from, here or by another program:
// they may take as long as it does, and wait for a driver that is busy. Any thread may call. why may be null;
// it is set where there is something to say.

// The controls of the camera with this identifier, in the driver's order, with their values of now. Empty
// when it has none or cannot be asked; why says which.
OSTREL_EXPORT QList<OVideoControl> videoControls(const QString& uniqueID, QString* why = 0);

// Sets several at once: all, or none where the driver can do that; else why says which were set. What depends
// on an automatic control is set after it, whatever the order of the list. False, with a reason, for a value
// that the control does not take, and for a control that is inactive: then the reason names the automatic one
// that has the say, which the same call may switch off. A camera may round; what it took is read by
// videoControls(). Most keep it until they are unplugged.
OSTREL_EXPORT bool setVideoControls(const QString& uniqueID, const QList<OVideoControl>& values,
                                    QString* why = 0);

// Sees the controls of one camera change, whoever changes them: another program, the camera itself, this
// process. Bound to one thread. Keeps the device open, and thereby awake, but nobody from using it.
class OSTREL_EXPORT OVideoControlWatch {
public:
    explicit OVideoControlWatch(const QString& uniqueID);
    ~OVideoControlWatch();

    // Why it sees nothing (any more): unplugged, or a camera that does not tell. Empty while it does.
    QString error() const;

    // For poll(), epoll or QSocketNotifier, to wait for reading only: readable for as long as take() has
    // something to give, or the camera has left. Belongs to the watch. -1 when it sees nothing from the
    // start.
    int descriptor() const;
    // 1: take() has something to give; 0: timeoutMs milliseconds are over; -1: it sees nothing (any more).
    // A negative time waits for ever.
    int wait(int timeoutMs);
    // The controls of which value, limits or flags changed since the last call, each once, as they are now.
    QList<OVideoControl> take();

private:
    Q_DISABLE_COPY(OVideoControlWatch)
    OVideoControlWatchPrivate* d;
};

} // namespace ostrel

#endif
