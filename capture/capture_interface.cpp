#include <ostrel/capture.h>

#include <memory>

namespace ostrel {

OVideoCaptureUnix::OVideoCaptureUnix() : QThread() {}

OVideoCaptureUnix::~OVideoCaptureUnix() {}

QSharedPointer<OVideoCaptureUnix> OVideoCaptureUnix::ptr() {
    // QSharedPointer's constructor frees nothing when there is no memory for its own part.
    std::unique_ptr<OVideoCaptureUnix> driver(new OVideoCaptureMacX);
    const QSharedPointer<OVideoCaptureUnix> shared(driver.get());
    driver.release();
    return shared;
}

} // namespace ostrel
