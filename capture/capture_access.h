// From a capture object to what the framework knows it by.
#ifndef OSTREL_CAPTURE_CAPTURE_ACCESS_H
#define OSTREL_CAPTURE_CAPTURE_ACCESS_H

namespace ostrel {

class OVideoCaptureUnix;

struct CaptureAccess {
    // The session object, on the capture's thread; null when there is none any more, or the capture is not of
    // this library's making.
    static const void* sessionOf(OVideoCaptureUnix* capture);
};

} // namespace ostrel

#endif
