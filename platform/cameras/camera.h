// What a camera is, for everything above it: the capture framework knows cameras only by these classes.
#ifndef OSTREL_PLATFORM_CAMERAS_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_CAMERA_H

#include "platform/cameras/error.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

// One frame as the camera has it. Holding it may hold one of the camera's few buffers; dropping the last
// reference gives that back. Any thread may drop or convert it, also after the camera was stopped or closed.
class CameraFrame {
public:
    virtual ~CameraFrame() = default;

    // Writes the whole picture as B, G, R, A with A = 255, top row first, scaled to width x height pixels, rows
    // stride bytes apart. False when the picture turns out to be broken; what was written is then undefined.
    // This is where the work of a frame is done: it is called once at most for each capture, and never for
    // frames that nobody takes. Re-entrant: two captures may convert one frame at the same time.
    virtual bool convert(uint8_t* bgra, int width, int height, int stride) = 0;

    // False when convert() can only fail for want of memory: the picture was found whole before.
    virtual bool mayBeBroken() const { return true; }

    // Bytes to add behind each row of the buffer handed out. Only a camera that was told to misbehave has any.
    virtual int rowPadding() const { return 0; }
};

// Receives the frames of a running camera, on the camera's delivery thread, one call at a time.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual void frameArrived(const std::shared_ptr<CameraFrame>& frame) = 0;
    // No frame will follow: unplugged, or the driver gave up.
    virtual void streamEnded(const Error& why) = 0;
};

// Figures of the stream since it was started; what a camera does not know stays 0 or empty.
struct StreamStatistics {
    uint64_t delivered = 0;              // frames handed to sinks
    uint64_t taken = 0;                  // of these, converted for somebody
    uint64_t skipped = 0;                // passed over because a newer one was already there
    uint64_t lost = 0;                   // gaps in the driver's sequence numbers
    std::map<std::string, uint64_t> dropped; // broken frames by reason
    std::string grantedFormat;           // four characters, "MJPG"
    int grantedWidth = 0;                // pixels
    int grantedHeight = 0;
    double grantedRate = 0;              // frames a second
    std::string ended;                   // why the stream ended by itself; empty while it runs
};

// A camera. All calls are thread-safe. open() and close() come in this order from one owner (the framework
// counts its clients); between them any number of sinks may be started.
class Camera {
public:
    virtual ~Camera() = default;

    virtual std::string identifier() const = 0;  // UTF-8, unique, the same after re-plugging
    virtual std::string displayName() const = 0; // UTF-8, never empty

    virtual Error open() = 0;
    // Stops what still runs and gives back every descriptor, thread and buffer.
    virtual void close() = 0;

    // Whether a capture session may use the opened camera as its input.
    virtual Error admitInput() { return Error(); }

    // Frames go to the sink from now on, from one delivery thread. width x height is what the sink will ask
    // convert() for, and guides the choice of the native size: the camera may run at any other. A second sink
    // joins the running stream.
    virtual Error start(int width, int height, const std::shared_ptr<FrameSink>& sink) = 0;
    // Returns when no call of the sink is in progress and none will come; from inside the sink's own call, at
    // once. Frames still held stay convertible. The last sink to stop ends the stream and its thread. Never
    // waits for a frame. Harmless for a sink that was not started.
    virtual void stop(const std::shared_ptr<FrameSink>& sink) = 0;

    // False once the camera is unplugged: this object will never deliver again.
    virtual bool attached() const { return true; }

    virtual StreamStatistics statistics() const { return StreamStatistics(); }
};

} // namespace cameras
} // namespace ostrel

#endif
