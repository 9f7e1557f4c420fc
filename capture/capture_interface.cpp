#include <ostrel/capture.h>

#include "base/shared_object.h"
#include "capture/diagnostics.h"

#include <ostrel/next_frame.h>

namespace ostrel {

OVideoCaptureUnix::OVideoCaptureUnix() : QThread() {}

OVideoCaptureUnix::~OVideoCaptureUnix() {}

QSharedPointer<OVideoCaptureUnix> OVideoCaptureUnix::ptr() {
    return sharedObject<OVideoCaptureUnix>(std::unique_ptr<OVideoCaptureUnix>(new OVideoCaptureMacX));
}

QSharedPointer<OVideoCaptureUnix> quietVideoCapture() {
    const diagnostics::Silence silence(true); // the constructor looks at it
    return OVideoCaptureUnix::ptr();
}

} // namespace ostrel
