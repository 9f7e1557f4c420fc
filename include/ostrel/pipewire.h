// Cameras that PipeWire offers: how it is doing, and how a program in a sandbox hands its connection over
// (Linux).
//
// Nothing of this is needed for capturing: such cameras are in the listing after the others, and are captured
// from by the same calls. A camera that has a video node of its own keeps its identifier and is captured
// through PipeWire only where its node is in use or not permitted.
#ifndef OSTREL_PIPEWIRE_H
#define OSTREL_PIPEWIRE_H

#include <ostrel/export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace ostrel {

struct OVideoPipeWirePrivate;

// From now on PipeWire's cameras, for listings and captures, are those behind this descriptor: a connected
// socket, as the camera portal's OpenPipeWireRemote gives it to programs in a sandbox. It is duplicated, the
// caller's stays the caller's. -1: those of the session's own daemon again. Captures that run go on as they
// are.
//
// Waits a second at most for the other side to answer. False, with everything as before, when it does not or
// PipeWire cannot be used here; why, which may be null, then says it. The connection ends with the daemon,
// and its cameras with it: a program that wants them back asks the portal again. Any thread may call.
OSTREL_EXPORT bool setPipeWireRemote(int descriptor, QString* why = 0);

// How PipeWire was at the moment of construction, which waits 100 ms at most; construct another one to look
// again. A value: copies are cheap, each is bound to one thread at a time.
class OSTREL_EXPORT OVideoPipeWire {
public:
    enum State {
        NOT_BUILT = 0,  // this library was built without it, as on macOS
        NO_DAEMON = 1,  // nobody listens where it should
        NO_LIBRARY = 2, // there is a daemon, but no libpipewire on this machine
        SILENT = 3,     // it does not answer; it is asked again after five seconds
        CONNECTED = 4
    };

    OVideoPipeWire();
    OVideoPipeWire(const OVideoPipeWire& other);
    OVideoPipeWire& operator=(const OVideoPipeWire& other);
    ~OVideoPipeWire();

    State state() const;
    // Where the daemon is looked for, for people: the path of a socket, or "a descriptor".
    QString where() const;
    // Of the daemon; empty unless connected.
    QString version() const;
    // Whether a program is there that connects cameras with who wants them (WirePlumber). Behind a portal it
    // cannot be seen, and is taken to be there.
    bool hasSessionManager() const;
    // Cameras that it offers, those with a video node of their own included, and other sources of pictures,
    // shared screens for example.
    int cameras() const;
    int otherSources() const;
    // Those of the cameras that have no video node in the listing: what PipeWire adds.
    int addedCameras() const;

private:
    QSharedPointer<OVideoPipeWirePrivate> d;
};

} // namespace ostrel

#endif
