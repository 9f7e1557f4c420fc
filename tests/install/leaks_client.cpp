// Starts captures, and leaves one unstarted. With an argument it loses a block of its own, which no suppression
// may hide.
#include <ostrel/capture.h>
#include <ostrel/virtual_camera.h>

#include <cstdlib>
#include <unistd.h>

int main(int argc, char**) {
    ostrel::OVideoTestPatternCamera camera("pattern", "Moving bars");
    camera.attach();
    for (int i = 0; i < 5; ++i) {
        QSharedPointer<ostrel::OVideoCaptureUnix> capture = ostrel::OVideoCaptureUnix::ptr();
        capture->startCapture("pattern", 320, 240);
        for (int poll = 0; poll < 5000 && !capture->isFinished(); ++poll)
            usleep(1000);
    }
    ostrel::OVideoCaptureUnix::ptr();
    if (argc > 1) {
        void* volatile lost = std::malloc(4321);
        lost = 0;
    }
    return 0;
}
