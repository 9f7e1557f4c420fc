// The native modes of a camera, and which of them captures use (over the system's own QTKit none are told).
#ifndef OSTREL_MODES_H
#define OSTREL_MODES_H

#include <ostrel/export.h>

#include <QtCore/QList>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <stdint.h>

namespace ostrel {

struct OVideoModePrivate;

// A mode that a camera offers or was granted; or a wish for one, in which what is empty or 0 means any, each
// by itself. A value: copies are independent, each is bound to one thread at a time.
class OSTREL_EXPORT OVideoMode {
public:
    OVideoMode(); // a wish for any mode
    OVideoMode(const OVideoMode& other);
    OVideoMode& operator=(const OVideoMode& other);
    ~OVideoMode();

    // Four characters, blanks at the end left out, "MJPG"; with "-BE" behind them where the kernel marks the
    // format as big-endian.
    QString format() const;
    // Whether its frames can be made pictures of. Without one there are only native frames.
    bool hasPicture() const;

    // Pixels; of a range of sizes, the largest. 0 where the driver lists no sizes.
    int width() const;
    int height() const;
    // The smallest of a range, and from size to size. Of a single size: itself, and 0.
    int leastWidth() const;
    int leastHeight() const;
    int stepWidth() const;
    int stepHeight() const;

    // From frame to frame, in seconds as a fraction; of a range, the shortest. 0 and 0 where the driver does
    // not say. For a range of sizes, intervals are those of its largest or smallest.
    uint32_t intervalNumerator() const;
    uint32_t intervalDenominator() const;
    // The longest of a range that has any interval between; else itself.
    uint32_t longestNumerator() const;
    uint32_t longestDenominator() const;
    double framesPerSecond() const; // at the interval; 0 where it is not known

    // A wish.
    void setFormat(const QString& format);
    void setSize(int width, int height); // a single one; what is negative counts as 0
    void setInterval(uint32_t numerator, uint32_t denominator);

private:
    friend struct OVideoModePrivate;
    OVideoModePrivate* d;
};

// What the camera offers, in its own order: one entry for each format, size and interval. As it was when the
// camera was opened where this process has it open, and at once then; else the hardware is asked, which may
// take as long as opening it, or whoever in this process is opening it for the first time is waited for.
// Empty when nothing is known, with the reason in *why, which may be null; of a driver that broke off, what
// it had told until then, with the reason. Cameras of which frames are pushed have no modes. Any thread may
// call.
OSTREL_EXPORT QList<OVideoMode> videoModes(const QString& uniqueID, QString* why = 0);

// From now on streams of this camera are started in such a mode, in this process, also after the camera was
// plugged in again; a stream that runs is left as it is. Of the modes that fit the wish the automatic choice
// takes the best, of those without a picture only when the wish names their format. The rate may differ from
// the wish by one percent. A listed mode is a wish as it is: for the largest size and the shortest interval
// of its ranges. OVideoMode() takes back what was requested before.
//
// False, with the reason in *why and nothing changed, when the camera offers none that fits, or cannot be
// asked. The driver may still grant another one than it offers, which is then used:
// OVideoCameraState::grantedMode() says which. Any thread may call; asks the hardware as videoModes() does.
OSTREL_EXPORT bool requestVideoMode(const QString& uniqueID, const OVideoMode& mode, QString* why = 0);

// What was requested; any mode where nothing was.
OSTREL_EXPORT OVideoMode requestedVideoMode(const QString& uniqueID);

} // namespace ostrel

#endif
