// How a camera is doing, and why no frames come (Linux).
#ifndef OSTREL_CAMERA_STATE_H
#define OSTREL_CAMERA_STATE_H

#include <ostrel/export.h>
#include <ostrel/modes.h>
#include <ostrel/statistics.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <stdint.h>

namespace ostrel {

struct OVideoCameraStatePrivate;

// What was known at the moment of construction; construct another one to look again. Answers at once, also
// while the camera is being opened, and after a start that failed. All texts are in words for people, in
// English; empty where there is nothing to say. A value: copies are cheap, each is bound to one thread at a
// time.
class OSTREL_EXPORT OVideoCameraState {
public:
    enum RefusedAt {
        NOT_REFUSED = 0,
        REFUSED_AT_OPENING = 1, // the device did not open: permissions, in use, unplugged
        REFUSED_AT_INPUT = 2,   // it opened, but may not be captured from
        REFUSED_AT_OUTPUT = 3   // no mode could be started
    };

    // uniqueID: as in the listing.
    explicit OVideoCameraState(const QString& uniqueID);
    OVideoCameraState(const OVideoCameraState& other);
    OVideoCameraState& operator=(const OVideoCameraState& other);
    ~OVideoCameraState();

    bool isKnown() const; // this process has had it in a listing
    bool isOpen() const;  // by a capture of this process

    // Why the last start that anybody tried gave no frames, with all that was tried.
    RefusedAt refusedAt() const;
    QString refused() const;
    // Why the stream ended by itself.
    QString ended() const;
    // Why no frames come at present though the stream runs; and how often it was started again for that.
    QString stalled() const;
    uint64_t restarts() const;
    // The first of the three that there is.
    QString whyNoFrames() const;

    // Why a capture that joined others did not get a larger native size.
    QString shared() const;
    // The way to the camera: "V4L2 (/dev/video0)".
    QString capturedBy() const;
    // Of the newest stream, also after its end.
    OVideoStatistics statistics() const;
    // The mode that it was granted, which may be another one than was requested.
    OVideoMode grantedMode() const;

private:
    QSharedPointer<OVideoCameraStatePrivate> d;
};

} // namespace ostrel

#endif
