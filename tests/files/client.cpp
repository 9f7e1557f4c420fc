// A client that does a little of everything that the library does in a process: it lists the cameras,
// captures a frame from a camera without hardware, and has the capture framework write an error to its log.
#include <ostrel/capture.h>
#include <ostrel/devices.h>
#include <ostrel/virtual_camera.h>

#include <chrono>
#include <cstdio>
#include <thread>

using namespace ostrel;

namespace {

bool capturesAFrame(const char* identifier) {
    const QSharedPointer<OVideoCaptureUnix> capture = OVideoCaptureUnix::ptr();
    capture->startCapture(identifier, 320, 240);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    VideoFrame frame;
    while (frame.data.empty() && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
        capture->selfVideoFrame(frame);
    }
    capture->stopVideoCapture();
    return !frame.data.empty();
}

} // namespace

int main() {
    OVideoTestPatternCamera good(QStringLiteral("good"), QStringLiteral("Good"), 320, 240);
    OVideoTestPatternCamera bad(QStringLiteral("bad"), QStringLiteral("Bad"), 320, 240);
    bad.setFault(VIRTUAL_CAMERA_FAULT_OPEN);
    if (!good.attach() || !bad.attach() || videoDevices().size() < 2) {
        std::puts("the cameras are not listed");
        return 1;
    }
    if (!capturesAFrame("good")) {
        std::puts("no frame came");
        return 1;
    }
    const QSharedPointer<OVideoCaptureUnix> failing = OVideoCaptureUnix::ptr();
    failing->startCapture("bad", 320, 240);
    failing->wait();
    failing->stopVideoCapture();
    std::puts("done");
    return 0;
}
