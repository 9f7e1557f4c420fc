#include <ostrel/capture.h>

namespace ostrel {

OVideoCaptureUnix::OVideoCaptureUnix() : QThread() {}

OVideoCaptureUnix::~OVideoCaptureUnix() {}

} // namespace ostrel
