// Lists the cameras and says when one is plugged in or pulled out.
//   watch_cameras [SECONDS]
// So that there is something to see without hardware, a virtual camera comes and goes.
#include <ostrel/device_monitor.h>
#include <ostrel/virtual_camera.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

typedef std::chrono::steady_clock Clock;

static void tell(const char* what, const QString& name, const QString& uniqueID) {
    std::printf("%s %s (%s)\n", what, name.toUtf8().constData(), uniqueID.toUtf8().constData());
    std::fflush(stdout);
}

// A program with an event loop polls monitor.descriptor() instead of waiting.
static void watch(ostrel::OVideoDeviceMonitor& monitor, int milliseconds) {
    const Clock::time_point end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (Clock::time_point now = Clock::now(); now < end; now = Clock::now()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - now);
        if (monitor.wait(static_cast<int>(left.count())) != 1)
            continue;
        const QList<ostrel::OVideoDeviceChange> changes = monitor.take();
        for (int i = 0; i < changes.size(); ++i)
            tell(changes[i].kind() == ostrel::OVideoDeviceChange::ADDED ? "+" : "-", changes[i].name(),
                 changes[i].uniqueID());
    }
}

int main(int argc, char** argv) {
    const int third = (argc > 1 ? std::atoi(argv[1]) : 6) * 1000 / 3;
    ostrel::OVideoTestPatternCamera visitor("example-visitor", "Visiting camera");

    ostrel::OVideoDeviceMonitor monitor;
    const QMap<QString, QString> cameras = monitor.cameras();
    for (QMap<QString, QString>::const_iterator camera = cameras.begin(); camera != cameras.end(); ++camera)
        tell("+", camera.value(), camera.key());

    watch(monitor, third);
    visitor.attach();
    watch(monitor, third);
    visitor.detach();
    watch(monitor, third);
    return 0;
}
