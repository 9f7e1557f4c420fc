#include <ostrel/capture.h>

#include "base/frame_memory.h"
#include "base/wake_descriptor.h"
#include "base/wrapping.h"
#include "capture/capture_access.h"
#include "capture/diagnostics.h"
#include "capture/session_handle.h"

#include <ostrel/devices.h>
#include <ostrel/processing.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <stddef.h>
#include <string>

namespace ostrel {

// States of a driver, all changes on the client's thread:
//
//   Idle       constructed                               capturing false
//   Refused    startCapture, camera unknown              capturing true, nothing started
//   Starting   startCapture, camera known                capturing true, run() in progress
//   Capturing  run() has returned                        capturing true, the framework delivers
//   Stopped    stopVideoCapture while capturing          capturing false, session object given up
//
// The session object has one reference and two threads that use it: the client's, and the driver's own during
// run(). Who is last gives it back: see SessionUse.
struct OVideoCaptureMacXPrivate {
    // Whether run() has the session object, and whether the client has given it up meanwhile.
    enum SessionUse { FREE, STARTING, GIVEN_UP_WHILE_STARTING, RELEASED };

    OVideoCaptureMacXPrivate()
        : quiet(diagnostics::Silence::isKept()), width(0), height(0), capturing(false), captureObject(0),
          sessionUse(FREE), givenUp(false), runs(0) {}

    const bool quiet; // writes no line, and its session neither
    int32_t width;
    int32_t height;
    FrameMemory frameBuffer; // at least frameBytes() of them while capturing
    QString cameraId;
    bool capturing;
    SessionObject* captureObject;
    std::atomic<int> sessionUse;
    bool givenUp;               // by the client; captureObject must not be used by it any more
    std::atomic<unsigned> runs; // that have ended; orders what run() did before what comes after wait()

    // Bytes of a frame of the driver's size, as an unsigned 32-bit product.
    int64_t frameBytes() const {
        return static_cast<int64_t>(static_cast<uint32_t>(wrapping::mul(width, height, 4)));
    }

    void replaceFrameBuffer(int newWidth, int newHeight);
    bool copyNewestFrame();
    void giveUpSession();
    void shutSession();
    void startSession();
    void refuseUnknown(const char* identifier);
};

namespace {

// A negative product, once widened, is more memory than there is.
size_t bufferBytes(int width, int height) {
    return static_cast<size_t>(static_cast<int64_t>(wrapping::mul(width, 4, height)));
}

// Qt gives each of its threads an event loop, and ends the program when that gets no descriptor.
bool threadsGetDescriptors() {
    const WakeDescriptor first, second;
    return first.valid() && second.valid();
}

} // namespace

// A start that is refused replaces the buffer too, while the old size stays and the old capture may go on:
// the new buffer is large enough for both. The old one goes when the new one is there.
void OVideoCaptureMacXPrivate::replaceFrameBuffer(int newWidth, int newHeight) {
    const size_t bytes = std::max(bufferBytes(newWidth, newHeight), static_cast<size_t>(frameBytes()));
    frameBuffer = FrameMemory(bytes);
}

// Copies the newest frame into frameBuffer; false unless it has the driver's size.
bool OVideoCaptureMacXPrivate::copyNewestFrame() {
    const diagnostics::Silence silence(quiet);
    const int64_t expected = frameBytes();
    const int64_t copied = givenUp ? 0 : session::copyFrame(captureObject, frameBuffer.data(), expected);
    return copied == expected;
}

// Those who wait for frames are told, unless an earlier capture goes on.
void OVideoCaptureMacXPrivate::refuseUnknown(const char* identifier) {
    if (cameraId.isEmpty() && !givenUp)
        session::refuse(captureObject, (std::string("No camera has the identifier ") + identifier).c_str());
}

void OVideoCaptureMacXPrivate::shutSession() {
    try {
        session::shut(captureObject);
    } catch (const std::bad_alloc&) { // run() stops it, though only when the camera has started
    }
}

// Stops the session and gives it back, or leaves both to run() when that is still starting it.
void OVideoCaptureMacXPrivate::giveUpSession() {
    if (givenUp)
        return;
    givenUp = true;
    // A start-up is shut before it is given up: from then on run() may free the object at any time. It may
    // also begin just now, so that each look at the use counts.
    int use = sessionUse.load();
    do {
        if (use == STARTING)
            shutSession();
    } while (!sessionUse.compare_exchange_weak(use, use == STARTING ? GIVEN_UP_WHILE_STARTING : RELEASED));
    if (use == STARTING) {
        diagnostics::line("after stop");
        return;
    }
    session::stop(captureObject);
    diagnostics::line("after stop");
    session::release(captureObject);
}

OVideoCaptureMacX::OVideoCaptureMacX() : OVideoCaptureUnix(), d(0) {
    std::unique_ptr<OVideoCaptureMacXPrivate> record(new OVideoCaptureMacXPrivate);
    diagnostics::line("OVideoCaptureMacX::OVideoCaptureMacX() ", this);
    record->captureObject = session::create();
    d = record.release();
}

void OVideoCaptureMacX::startCapture(const char* cameraId, int width, int height) {
    d->capturing = true;
    d->replaceFrameBuffer(width, height);
    const char* const identifier = cameraId ? cameraId : "";
    {
        OVideoInfoMacX info;
        if (!info.deviceByID(QString::fromLatin1(identifier))) {
            d->refuseUnknown(identifier);
            return;
        }
    }
    d->width = width;
    d->height = height;
    d->cameraId = QString::fromLatin1(identifier);
    if (d->givenUp)
        return;
    // A start-up still in progress reads what is set here, so a second start waits for it.
    wait();
    d->runs.load(std::memory_order_acquire);
    session::setCamera(d->captureObject, identifier, width, height);
    if (!threadsGetDescriptors()) {
        session::refuse(d->captureObject, "The system has no descriptors left to start a camera with");
        return;
    }
    start(QThread::InheritPriority);
    if (!isRunning() && !isFinished())
        session::refuse(d->captureObject, "The system gave no thread to start the camera on");
}

// On the driver's own thread: unless the client was quicker, has the session started.
void OVideoCaptureMacXPrivate::startSession() {
    int use = FREE;
    if (!sessionUse.compare_exchange_strong(use, STARTING))
        return; // stopped before it began
    try {
        session::start(captureObject);
    } catch (const std::bad_alloc&) {
        // On this thread nobody could catch it. As with every start that fails, no frames come.
        diagnostics::line(">>> no memory to start the camera");
    }
    use = STARTING;
    if (sessionUse.compare_exchange_strong(use, FREE))
        return;
    session::stop(captureObject);
    session::release(captureObject);
    sessionUse.store(RELEASED);
}

void OVideoCaptureMacX::run() {
    const diagnostics::Silence silence(d->quiet);
    diagnostics::line(">>> OVideoCaptureMacX::run() ", this);
    d->startSession();
    d->runs.fetch_add(1, std::memory_order_release);
}

void OVideoCaptureMacX::stopVideoCapture() {
    const diagnostics::Silence silence(d->quiet);
    diagnostics::line("stopping for OVideoCaptureMacX ", this);
    if (!d->capturing)
        return;
    diagnostics::line("stopping for OVideoCaptureMacX1 ", this);
    d->capturing = false;
    d->giveUpSession();
    quit();
    d->frameBuffer.reset();
}

QSharedPointer<VideoFrame> OVideoCaptureMacX::frame() {
    return QSharedPointer<VideoFrame>();
}

void OVideoCaptureMacX::videoFrame(std::vector<unsigned char>& out) {
    out.clear();
    if (!d->capturing || !d->copyNewestFrame())
        return;
    out.insert(out.end(), d->frameBuffer.data(), d->frameBuffer.data() + d->frameBytes());
}

void OVideoCaptureMacX::selfVideoFrame(VideoFrame& frame) {
    if (!d->capturing || !d->copyNewestFrame())
        return;
    const size_t bytes = static_cast<size_t>(d->frameBytes());
    frame.width = d->width;
    frame.height = d->height;
    frame.timestamp = OVideoCommon::get_time();
    frame.data.resize(bytes);
    frame.frameNumber = d->givenUp ? 0 : session::frameCounter(d->captureObject);
    frame.formatId = 4;
    std::copy(d->frameBuffer.data(), d->frameBuffer.data() + bytes, frame.data.begin());
}

QString OVideoCaptureMacX::cameraUniqueId() {
    return d->cameraId;
}

int OVideoCaptureMacX::width() {
    return d->width;
}

int OVideoCaptureMacX::height() {
    return d->height;
}

void OVideoCaptureMacX::startThreadVideoCapture() {}

const void* CaptureAccess::sessionOf(OVideoCaptureUnix* capture) {
    const OVideoCaptureMacX* const driver = qobject_cast<OVideoCaptureMacX*>(capture);
    return driver && !driver->d->givenUp ? driver->d->captureObject : 0;
}

// The start-up may still be running, on this object's thread: it is waited for, so that the object is not
// freed under it.
OVideoCaptureMacX::~OVideoCaptureMacX() {
    const diagnostics::Silence silence(d->quiet);
    diagnostics::line("OVideoCaptureMacX::~OVideoCaptureMacX() ", this);
    stopVideoCapture();
    wait();
    d->runs.load(std::memory_order_acquire);
    if (!d->givenUp)
        session::abandon(d->captureObject);
    delete d;
    d = 0;
}

} // namespace ostrel
