#include <ostrel/capture.h>

#include "base/shared_object.h"

namespace ostrel {

OVideoCaptureUnix::OVideoCaptureUnix() : QThread() {}

OVideoCaptureUnix::~OVideoCaptureUnix() {}

QSharedPointer<OVideoCaptureUnix> OVideoCaptureUnix::ptr() {
    return sharedObject<OVideoCaptureUnix>(std::unique_ptr<OVideoCaptureUnix>(new OVideoCaptureMacX));
}

} // namespace ostrel
