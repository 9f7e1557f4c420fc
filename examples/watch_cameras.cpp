// Lists the cameras and says when one is plugged in or pulled out.
//   watch_cameras [SECONDS]
// The library calls nobody back: asking again is how a client learns of changes, and costs little. So that
// there is something to see without hardware, a virtual camera comes and goes.
#include <ostrel/devices.h>
#include <ostrel/virtual_camera.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

typedef QMap<QString, QString> Cameras; // identifier -> name

static void tell(const char* what, const Cameras& cameras, const Cameras& except) {
    for (Cameras::const_iterator camera = cameras.begin(); camera != cameras.end(); ++camera)
        if (!except.contains(camera.key()))
            std::printf("%s %s (%s)\n", what, camera.value().toUtf8().constData(),
                        camera.key().toUtf8().constData());
    std::fflush(stdout);
}

int main(int argc, char** argv) {
    const int steps = (argc > 1 ? std::atoi(argv[1]) : 6) * 4;
    ostrel::OVideoTestPatternCamera visitor("example-visitor", "Visiting camera");

    Cameras known;
    for (int step = 0; step <= steps; ++step) {
        if (step == steps / 3)
            visitor.attach();
        if (step == steps * 2 / 3)
            visitor.detach();

        const Cameras now = ostrel::videoDevices();
        tell("+", now, known);
        tell("-", known, now);
        known = now;
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
    }
    return 0;
}
