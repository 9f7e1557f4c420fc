// The smallest client: captures from the first camera and asks for its newest frame thirty times a second.
#include <ostrel/capture.h>
#include <ostrel/devices.h>
#include <ostrel/virtual_camera.h>

#include <chrono>
#include <cstdio>
#include <thread>

int main() {
    ostrel::OVideoTestPatternCamera pattern("example-pattern", "Test pattern");
    if (ostrel::videoDevices().isEmpty())
        pattern.attach(); // no camera here, so capture from one without hardware

    const QByteArray id = ostrel::videoDevices().keys().first().toLatin1();
    QSharedPointer<ostrel::OVideoCaptureUnix> capture = ostrel::OVideoCaptureUnix::ptr();
    capture->startCapture(id.constData(), 640, 480); // returns at once, frames arrive later

    ostrel::VideoFrame frame;
    uint32_t shown = 0;
    for (int poll = 0; poll < 300 && shown < 30; ++poll) { // ten seconds at most
        std::this_thread::sleep_for(std::chrono::milliseconds(33));
        capture->selfVideoFrame(frame); // the newest, perhaps the same again
        if (frame.frameNumber == shown)
            continue;
        shown = frame.frameNumber;
        const uint8_t* middle =
            &frame.data[static_cast<size_t>(frame.height / 2 * frame.width + frame.width / 2) * 4];
        std::printf("frame %u: %d x %d, B %d G %d R %d in the middle\n", shown, frame.width, frame.height,
                    middle[0], middle[1], middle[2]);
    }
    capture->stopVideoCapture();
    if (shown > 0)
        return 0;
    std::fprintf(stderr,
                 "no frame from %s within ten seconds: a line of the library above says why, or it "
                 "sends nothing\n",
                 id.constData());
    return 1;
}
