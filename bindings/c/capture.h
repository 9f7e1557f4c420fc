// A capture, and further places in its frames.
#ifndef OSTREL_BINDINGS_C_CAPTURE_H
#define OSTREL_BINDINGS_C_CAPTURE_H

#include "bindings/c/handles.h"

#include <ostrel/native_frame.h>
#include <ostrel/next_frame.h>

namespace ostrel {
namespace c {

// Under its turn, but for the size.
class Place : public Object {
public:
    explicit Place(const QSharedPointer<OVideoCaptureUnix>& capture)
        : reader(capture), width(capture->width()), height(capture->height()) {}

    int descriptor() override { return reader.descriptor(); } // under the lock that its frames are under

    OVideoFrameReader reader;
    const int width, height;
    OVideoFrameFacts facts; // of the frame before
    OVideoNativeFrame native;
    bool nativeWaits = false; // it did not fit into the memory of the call before
};

class Capture : public Place {
public:
    explicit Capture(const QSharedPointer<OVideoCaptureUnix>& started) : Place(started), capture_(started) {}

    void end() override { stop(); }
    // The waiting of others ends by it.
    void stop();
    std::shared_ptr<Place> another();
    // False when there is no picture; throws when it does not fit.
    bool poll(uint8_t* pixels, size_t bytes, uint32_t* number);

private:
    std::mutex calls_; // of the capture object, which is one thread's at a time
    QSharedPointer<OVideoCaptureUnix> capture_;
    VideoFrame polled_;
};

} // namespace c
} // namespace ostrel

#endif
