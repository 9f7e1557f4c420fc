// What a camera is, for everything above it: the capture framework knows cameras only by these classes.
#ifndef OSTREL_PLATFORM_CAMERAS_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_CAMERA_H

#include "platform/cameras/controls.h"
#include "platform/cameras/details.h"
#include "platform/cameras/error.h"
#include "platform/cameras/figures.h"
#include "platform/cameras/frame_facts.h"
#include "platform/cameras/modes.h"
#include "platform/cameras/pixels/output.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {

// One frame as the camera has it. Holding it may hold one of the camera's few buffers; dropping the last
// reference gives that back. Any thread may drop or convert it, also after the camera was stopped or closed.
class CameraFrame {
public:
    virtual ~CameraFrame() = default;

    // Writes the whole picture, scaled to the output's size. False when the picture turns out to be broken;
    // what was written is then undefined. This is where the work of a frame is done: it is never called for
    // frames that nobody takes. Re-entrant: two captures may convert one frame at the same time.
    virtual bool convert(const pixels::Output& to) = 0;
    // The same as B, G, R, A.
    bool convert(uint8_t* bgra, int width, int height, int stride) {
        return convert(pixels::Output{pixels::OutputFormat::Bgra, bgra, width, height, stride});
    }

    virtual FrameFacts facts() const { return FrameFacts(); }

    using PictureReader = std::function<void(const pixels::Picture&)>;
    // Lets the reader see the picture as the camera delivered it; its bytes are there during the call. False,
    // with nobody called, when they cannot be had.
    virtual bool show(const PictureReader&) { return false; }

    // False when no picture can ever be made of it: it can only be shown, as picture of the layout Opaque.
    virtual bool hasPicture() const { return true; }

    // False when convert() can only fail for want of memory: the picture was found whole before.
    virtual bool mayBeBroken() const { return true; }

    // From row to row, in bytes, in the buffer of a picture of this width. Some hardware aligns its rows.
    virtual int rowBytes(int width) const { return width * 4; }
};

// Receives the frames of a running camera, one call at a time.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual void frameArrived(const std::shared_ptr<CameraFrame>& frame) = 0;
    // Whether anybody would see a frame that came now. Not while all are held back.
    virtual bool listens() const { return true; }
    // No frame will follow: unplugged, or the driver gave up.
    virtual void streamEnded(const Error& why) = 0;
};

// All calls are thread-safe. Those marked "at once" never wait for hardware, whatever else the camera does
// meanwhile. open() and close() come in this order from one owner (the framework counts its clients); between
// them any number of sinks may be started.
class Camera {
public:
    virtual ~Camera() = default;

    // At once. UTF-8, unique, the same after re-plugging; a name is never empty.
    virtual std::string identifier() const = 0;
    virtual std::string displayName() const = 0;
    virtual CameraDetails details() const { return CameraDetails(); }
    // At once. The numbers (st_rdev) of the device nodes behind it: two cameras with one in common are the
    // same. Empty where there is none.
    virtual std::vector<uint64_t> devices() const { return std::vector<uint64_t>(); }

    // All that is on offer: at once, as it was when the camera was opened, while it is open or being opened
    // or closed; else the hardware is asked. An error where it is not known, or not all of it.
    virtual Error modes(NativeModes&) { return Error(); }

    // Without waiting for hardware. Whether the system lets this process open it, as far as can be seen.
    virtual bool mayBeOpened() const { return true; }
    virtual Error open() = 0;
    // Stops what still runs and gives back every descriptor, thread and buffer.
    virtual void close() = 0;

    // Whether a capture session may use the opened camera as its input.
    virtual Error admitInput() { return Error(); }

    // Frames go to the sink from now on. width x height is what the sink will ask convert() for, and guides
    // the choice of the native size: the camera may run at any other. A second sink joins the running stream.
    virtual Error start(int width, int height, const std::shared_ptr<FrameSink>& sink) = 0;
    // Returns when no call of the sink is in progress and none will come; from inside the sink's own call, at
    // once. Frames still held stay convertible. The last sink to stop ends the stream and its thread. Never
    // waits for a frame, nor for the start of another sink. Harmless for a sink that was not started.
    virtual void stop(const std::shared_ptr<FrameSink>& sink) = 0;

    // At once. False once the camera is unplugged: this object will never deliver again.
    virtual bool attached() const { return true; }

    // At once. Of the newest stream, also after its end.
    virtual StreamStatistics statistics() const { return StreamStatistics(); }

    // At once; what is asked of them is not. Null: this kind has none. They do not keep the camera.
    virtual std::shared_ptr<Controls> controls() const { return nullptr; }
};

} // namespace cameras
} // namespace ostrel

#endif
