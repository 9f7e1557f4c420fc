// Capturing from one camera: a factory for capture objects, which start a camera on a thread of their own
// and hand out its newest frame when they are asked. The library never calls the client.
#ifndef OSTREL_CAPTURE_H
#define OSTREL_CAPTURE_H

#include <ostrel/export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QThread>

#include <stdint.h>
#include <vector>

namespace ostrel {

// One captured frame: a plain value, owned by the caller.
struct VideoFrame {
    VideoFrame() : formatId(0), frameNumber(0), width(0), height(0), timestamp(0) {}

    int32_t formatId;          // 4: 32-bit pixels, bytes in the order B, G, R, A
    uint32_t frameNumber;      // frames delivered since the capture started, when this one was handed out
    int32_t width;             // pixels
    int32_t height;            // pixels
    uint32_t timestamp;        // OVideoCommon::get_time() when the frame was handed out, not when captured
    std::vector<uint8_t> data; // width * height * 4 bytes, top row first, rows without padding
};

// The capture contract. An object is started once; after stopVideoCapture() ask ptr() for a new one.
// Bound to one thread: one client thread makes all calls of one object. Objects are independent of each
// other.
class OSTREL_EXPORT OVideoCaptureUnix : public QThread {
    Q_OBJECT

public:
    OVideoCaptureUnix();
    virtual ~OVideoCaptureUnix();

    // A new capture object on every call, owned by the pointer. Dropping the last pointer stops a capture.
    static QSharedPointer<OVideoCaptureUnix> ptr();

    // Starts capturing from the camera with this identifier (see OVideoDeviceUnix::uniqueID; letter case is
    // ignored when looking it up, but the camera is opened by its exact identifier) at exactly width x height
    // pixels. Returns at once; frames arrive later. An identifier that no camera has is refused silently:
    // width(), height() and cameraUniqueId() keep their values. cameraId is ASCII and ends with a NUL.
    // Throws std::bad_alloc when width * 4 * height bytes cannot be had.
    virtual void startCapture(const char* cameraId, int width, int height) = 0;

    // Ends a capture; harmless when none is running.
    virtual void stopVideoCapture() = 0;

    // Always a null pointer on this platform: frames are fetched with selfVideoFrame().
    virtual QSharedPointer<VideoFrame> frame() = 0;

    // Fills frame with the newest frame, a copy. Leaves it untouched when there is none of the requested
    // size.
    virtual void selfVideoFrame(VideoFrame& frame) = 0;

    // Identifier, width and height in pixels of the last successful startCapture(); empty and 0 before.
    virtual QString cameraUniqueId() = 0;
    virtual int width() = 0;
    virtual int height() = 0;

private:
    Q_DISABLE_COPY(OVideoCaptureUnix)
};

struct OVideoCaptureMacXPrivate;

// The driver that ptr() hands out.
class OSTREL_EXPORT OVideoCaptureMacX : public OVideoCaptureUnix {
    Q_OBJECT

public:
    OVideoCaptureMacX();
    ~OVideoCaptureMacX();

    void startCapture(const char* cameraId, int width, int height);
    void stopVideoCapture();
    QSharedPointer<VideoFrame> frame();
    void selfVideoFrame(VideoFrame& frame);
    QString cameraUniqueId();
    int width();
    int height();

    // Replaces out by the newest frame's width * height * 4 bytes (B, G, R, A; top row first), or empties it
    // when there is none of the requested size.
    void videoFrame(std::vector<unsigned char>& out);

    // Does nothing.
    void startThreadVideoCapture();

protected:
    void run();

private:
    friend struct CaptureAccess;
    Q_DISABLE_COPY(OVideoCaptureMacX)
    OVideoCaptureMacXPrivate* d;
};

} // namespace ostrel

#endif
