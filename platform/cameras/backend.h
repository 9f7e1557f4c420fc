// What a kind of camera supplies; the rest of a camera's life is written once, in StreamingCamera and Stream.
#ifndef OSTREL_PLATFORM_CAMERAS_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_BACKEND_H

#include "platform/cameras/camera.h"
#include "platform/cameras/delivery_thread.h"
#include "platform/cameras/figures.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

// What a stream is started for.
struct Request {
    Size size;            // pixels: the largest width and the largest height that anybody asked for
    double leastRate = 0; // frames a second that must not be given up for it
    ModeWish wish;        // no other mode will do
};

// Where a backend's frames go, and what is counted about them. Lives as long as anybody holds it.
class Outlet {
public:
    virtual ~Outlet() = default;
    // For kinds without a thread of their own in the stream: calls every sink and counts the frame. False
    // when nobody listened.
    virtual bool deliver(const std::shared_ptr<CameraFrame>& frame) = 0;
    virtual const std::shared_ptr<Figures>& figures() const = 0;
};

// What a wait for a frame has brought.
struct Arrival {
    std::shared_ptr<CameraFrame> frame; // null: none that is whole
    bool signOfLife = false;            // the hardware sent something, be it broken
    bool sourceChanged =
        false; // what the hardware is given to send is no longer what the mode was chosen for
};

// Never called by two threads at once, but where it says so. In this order, each step in its turn:
//   open() { start() { next()... or deliveries of its own } stop() } close()
// These may block. After a failure everything is as before the call.
class Backend {
public:
    virtual ~Backend() = default;

    // Any thread, at any time, at once: no system call on a node that is open in this process. False once
    // what the backend was made for has left the machine.
    virtual bool attached() const = 0;

    // Likewise: whether the system lets this process open it.
    virtual bool mayBeOpened() const { return true; }

    virtual Error open() = 0;
    virtual void close() = 0;
    // Any thread, at any time, at once: whether a session may use the opened camera, and whether another sink
    // may.
    virtual Error admitInput() { return Error(); }
    virtual Error admitOutput() { return Error(); }

    // Any thread, at any time, at once, always the same object. Null: this kind has none.
    virtual std::shared_ptr<Controls> controls() const { return nullptr; }

    // In its turn, while it does not stream; opened or not. Adds all modes on offer; after an error, those
    // that were found until then. None where there is no choice.
    virtual Error modes(NativeModes&) { return Error(); }

    // Chooses a mode, sets it as granted in the outlet's figures, and starts the stream.
    virtual Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) = 0;
    // Frames that are still held stay convertible.
    virtual void stop() = 0;
    // Whether start() would give the request a larger size than the running mode has. No by default: the
    // stream is shared as it is.
    virtual bool canServeBetter(const Request&) { return false; }
    // Tries what revives a camera that has stalled, or sends something else now.
    virtual Error restart(const Request& request, const std::shared_ptr<Outlet>& outlet) {
        stop();
        return start(request, outlet);
    }

    // The name of the delivery thread, at most 15 characters, a literal. Null: frames come from a thread of
    // its own by Outlet::deliver().
    virtual const char* threadName() const = 0;
    // On the delivery thread: waits for the next frame, for a second at most or until it is woken. An error
    // ends the stream. Of several frames the newest is returned; the others are given back and counted.
    virtual Error next(const StopSignal&, Arrival&) { return Error(); }
    // On the delivery thread: the longest time between two frames that is no stall, in nanoseconds, as far as
    // the hardware tells; 0 where no frame is owed.
    virtual int64_t longestPause() { return 0; }
};

} // namespace cameras
} // namespace ostrel

#endif
