// Cameras without hardware. A client adds one, finds it in the listing beside the real ones and captures from
// it with the same calls. The library adds none by itself.
#ifndef OSTREL_VIRTUAL_CAMERA_H
#define OSTREL_VIRTUAL_CAMERA_H

#include <ostrel/export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <stdint.h>

namespace ostrel {

// Ways in which a virtual camera can be told to fail.
enum VIRTUAL_CAMERA_FAULT {
    VIRTUAL_CAMERA_FAULT_NONE = 0,
    VIRTUAL_CAMERA_FAULT_OPEN = 1,        // cannot be opened
    VIRTUAL_CAMERA_FAULT_INPUT = 2,       // a session refuses it as input
    VIRTUAL_CAMERA_FAULT_OUTPUT = 3,      // a session refuses the output
    VIRTUAL_CAMERA_FAULT_PADDED_ROWS = 4, // frames have padding at the end of each row
    VIRTUAL_CAMERA_FAULT_STALL = 5        // delivers no frame; healed, it goes on
};

class VirtualCameraBackend;

// What the kinds have in common. Thread-safe: any thread may call, also while the camera is captured from,
// and the object may be destroyed then: the capture ends as if the camera was unplugged.
class OSTREL_EXPORT OVideoVirtualCamera {
public:
    virtual ~OVideoVirtualCamera(); // detaches

    QString uniqueID();
    QString name(); // the identifier when it was constructed with an empty one

    // Adds the camera to the machine's listing. False, with nothing changed, when it is attached already,
    // when another attached virtual camera has the same identifier, or when the identifier is empty or holds
    // anything but printable ASCII: startCapture() takes no other. Names may be any text.
    bool attach();
    // Takes it out of the listing, as if unplugged: captures end, the last frame stays readable. No frame is
    // delivered after the return. Attached again it is a camera like new, with the faults and the figures
    // below carried over.
    void detach();
    bool isAttached();

    // Takes effect at the next open, start or frame.
    void setFault(VIRTUAL_CAMERA_FAULT fault);

    // Frames that this camera has delivered to captures since it was constructed, and how often a picture was
    // drawn or converted because somebody took one. Both wrap.
    uint32_t framesDelivered();
    uint32_t framesTaken();

protected:
    explicit OVideoVirtualCamera(const QSharedPointer<VirtualCameraBackend>& backend);
    const QSharedPointer<VirtualCameraBackend>& backend() const { return d; }

private:
    Q_DISABLE_COPY(OVideoVirtualCamera)
    QSharedPointer<VirtualCameraBackend> d;
};

// A moving test pattern: eight colour bars (white, yellow, cyan, green, magenta, red, blue, black, plain at
// 40 % of the height), the word TOP, a moving mark, a frame counter and a clock, these two both as digits and
// as rows of black and white cells that a program can read. The counter is 1 for a stream's first frame and
// counts the frames that the rate provides for: a gap shows that frames were passed over.
class OSTREL_EXPORT OVideoTestPatternCamera : public OVideoVirtualCamera {
public:
    // width, height: the camera's native size in pixels (16 to 8192 each, even); framesPerSecond: 0.001 to
    // 1000. Values outside are clamped, odd sizes made even by one pixel less. A capture of another size is
    // scaled.
    OVideoTestPatternCamera(const QString& uniqueID, const QString& name, int width = 1280, int height = 720,
                            double framesPerSecond = 30.0);

    // Reads the frame counter and the clock (OVideoCommon::get_time() when the frame was made) from a picture
    // of the pattern in B, G, R, A, top row first, stride bytes from row to row. Works for native sizes and
    // pictures from 160 x 120, and survives YUV and JPEG. False, with the outputs untouched, when the cells
    // cannot be read, their check sum is wrong or the rows of cells differ (not this pattern, mirrored, or a
    // torn frame).
    static bool decode(const uint8_t* bgra, int width, int height, int stride, uint32_t& counter,
                       uint32_t& clock);
};

// Plays a Y4M file at the file's own rate, each capture from the beginning. Layouts: C420 (also jpeg, mpeg2,
// paldv), C422, C444 and Cmono with 8 bits, of any size from 1 to 16384; interlaced frames are taken as they
// are. Frames are read from the file when somebody takes them: one that was cut off meanwhile is no frame.
class OSTREL_EXPORT OVideoFileCamera : public OVideoVirtualCamera {
public:
    // loop: start again at the end; otherwise the last frame stays and no more arrive. The file is looked at
    // here for the answers below, and again when the camera is opened.
    OVideoFileCamera(const QString& uniqueID, const QString& name, const QString& path, bool loop = true);

    // Empty when the file can be played, else one line that says what is wrong with it. A camera with an
    // error cannot be opened.
    QString error();
    int width(); // native, pixels; 0 with an error
    int height();
    double framesPerSecond(); // 25 when the file does not say, 0 with an error
};

// Delivers the frames that the client pushes.
class OSTREL_EXPORT OVideoPushCamera : public OVideoVirtualCamera {
public:
    OVideoPushCamera(const QString& uniqueID, const QString& name);

    // Delivers one frame to every running capture of this camera, on the caller's thread; each capture scales
    // it to its own size. The picture is copied. bgra: B, G, R, A, top row first, stride bytes from row to
    // row (at least width * 4); width, height: 1 to 16384. A is not looked at. False when the arguments are
    // refused, when nobody captures, when the camera was told to stall, and from inside the delivery of
    // another frame of it.
    bool push(const uint8_t* bgra, int width, int height, int stride);
    // The same from I420: three planes one after the other in one buffer, without padding; odd sizes have the
    // half rounded up for U and V.
    bool pushI420(const uint8_t* i420, int width, int height);
};

} // namespace ostrel

#endif
