#include "base/monotonic_clock.h"
#include "bench/capture/client.h"
#include "bench/capture/json.h"
#include "bench/capture/measure.h"
#include "bench/capture/suites.h"
#include "bench/capture/timed_kernel.h"

#include <ostrel/virtual_camera.h>

#include <deque>
#include <fstream>
#include <string>

namespace bench {

namespace {

const int CAMERAS = 16;
const int RATE = 30; // frames a second
const int64_t SECOND = 1000000000;

struct Size {
    int width, height;
};
const Size SIZES[] = {{320, 240}, {640, 480}, {800, 600}, {1280, 720}};
const Size LARGEST = {1280, 720};
const int SIZE_COUNT = sizeof SIZES / sizeof SIZES[0];

// Of this process, in megabytes. Without the buffers of the drivers, which are memory shared with them.
double residentMegabytes() {
    std::ifstream status("/proc/self/status");
    double kilobytes = 0;
    for (std::string word; status >> word;) {
        double figure = 0;
        if ((word == "RssAnon:" || word == "RssFile:") && status >> figure)
            kilobytes += figure;
    }
    return kilobytes / 1024;
}

// Takes every frame of every camera in one thread, in the four sizes by turns.
bool capture(const std::string& cameras, int seconds) {
    const QuietErrors quiet;
    const double before = residentMegabytes();
    std::deque<Client> clients;
    for (int i = 0; i < CAMERAS; ++i)
        clients.emplace_back(identifierOf(i), SIZES[i % SIZE_COUNT].width, SIZES[i % SIZE_COUNT].height);
    for (Client& client : clients)
        if (!client.waitForFrame(1))
            return false;
    const int rounds = RATE * seconds;
    const int64_t began = ostrel::monotonicNanoseconds();
    const Cost start = costsSoFar();
    for (int i = 0; i < rounds; ++i) {
        for (Client& client : clients)
            client.poll();
        sleepUntil(began + (i + 1) * SECOND / RATE);
    }
    const Cost cost = costsSoFar() - start;
    JsonLine("memory")
        .add("cameras", cameras)
        .add("before_megabytes", before)
        .add("megabytes", residentMegabytes())
        .add("microseconds", cost.microseconds / rounds / CAMERAS)
        .write();
    return true;
}

bool captureFromPatterns(const std::string& name, bool eachOfItsSize, int seconds) {
    plugIn(CameraModel(), 0);
    std::deque<ostrel::OVideoTestPatternCamera> cameras;
    for (int i = 0; i < CAMERAS; ++i) {
        const Size size = eachOfItsSize ? SIZES[i % SIZE_COUNT] : LARGEST;
        const QString identifier = QString::fromLatin1("pattern %1").arg(i, 2, 10, QLatin1Char('0'));
        cameras.emplace_back(identifier, QString(), size.width, size.height);
        if (!cameras.back().attach())
            return false;
    }
    return capture(name, seconds);
}

bool captureFromDriver(const std::string& name, uint32_t fourcc, int seconds) {
    CameraModel model;
    model.fourcc = fourcc;
    model.width = LARGEST.width;
    model.height = LARGEST.height;
    plugIn(model, CAMERAS);
    return capture(name, seconds);
}

} // namespace

bool measureMemory(int seconds, const std::string& cameras) {
    if (cameras == "patterns of the same sizes")
        return captureFromPatterns(cameras, true, seconds);
    if (cameras == "patterns of 1280x720")
        return captureFromPatterns(cameras, false, seconds);
    if (cameras == "YUYV 1280x720")
        return captureFromDriver(cameras, V4L2_PIX_FMT_YUYV, seconds);
    if (cameras == "MJPEG 1280x720")
        return captureFromDriver(cameras, V4L2_PIX_FMT_MJPEG, seconds);
    return false;
}

} // namespace bench
