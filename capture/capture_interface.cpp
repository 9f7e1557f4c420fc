#include <ostrel/capture.h>

namespace ostrel {

OVideoCaptureUnix::OVideoCaptureUnix() : QThread() {}

OVideoCaptureUnix::~OVideoCaptureUnix() {}

QSharedPointer<OVideoCaptureUnix> OVideoCaptureUnix::ptr() {
    return QSharedPointer<OVideoCaptureUnix>(new OVideoCaptureMacX);
}

} // namespace ostrel
