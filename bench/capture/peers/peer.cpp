#include "bench/capture/peers/peer.h"

#include "bench/capture/pictures.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <exception>
#include <memory>
#include <stdexcept>
#include <sys/resource.h>

namespace bench {

namespace {

const int WARM_UP = 10; // frames

double microseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec);
}

struct Usage {
    Usage() {
        rusage usage = {};
        ::getrusage(RUSAGE_SELF, &usage);
        user = microseconds(usage.ru_utime);
        system = microseconds(usage.ru_stime);
        pageFaults = usage.ru_minflt;
    }
    double user, system; // microseconds
    long pageFaults;
};

int64_t monotonicNow() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * int64_t(1000000000) + now.tv_nsec;
}

// In milliseconds; nothing for a camera that puts no number into its pictures.
void noteAge(const Peer& peer, const Request& request, std::string& ages) {
    const int64_t now = monotonicNow();
    int bytesPerPixel = 0;
    const uint8_t* const pixels = peer.pixels(bytesPerPixel);
    const int64_t arrival =
        request.layout == "MJPG" ? 0 : peer.arrival(readStamp(pixels, bytesPerPixel, request.width));
    if (arrival == 0)
        return;
    char text[40];
    std::snprintf(text, sizeof text, "%s%.3f", ages.empty() ? "" : ", ",
                  static_cast<double>(now - arrival) / 1e6);
    ages += text;
}

// By which one can see that all of them got the same picture.
int middleByte(const Peer& peer, const Request& request) {
    int bytesPerPixel = 0;
    const uint8_t* const pixels = peer.pixels(bytesPerPixel);
    return pixels[request.width * request.height / 2 * bytesPerPixel];
}

} // namespace

// Of the library that stands before the kernel (preload.cpp).
int64_t Peer::arrival(uint32_t number) const {
    using Arrival = int64_t (*)(uint32_t);
    static const auto ask = reinterpret_cast<Arrival>(::dlsym(RTLD_DEFAULT, "bench_timed_camera_arrival"));
    return ask ? ask(number) : 0;
}

int runPeer(const char* name, int argc, char** argv, Peer* (*open)(const Request& request)) {
    if (argc != 7) {
        std::fprintf(stderr, "usage: %s DEVICE WIDTH HEIGHT YUYV|NV12|MJPG RATE FRAMES\n", argv[0]);
        return 2;
    }
    Request request;
    request.device = argv[1];
    request.width = std::atoi(argv[2]);
    request.height = std::atoi(argv[3]);
    request.layout = argv[4];
    request.rate = std::atoi(argv[5]);
    const int frames = std::atoi(argv[6]);
    try {
        const std::unique_ptr<Peer> peer(open(request));
        for (int i = 0; i < WARM_UP; ++i)
            peer->takeFrame();
        const Usage before;
        int fresh = 0;
        std::string ages;
        for (int i = 0; i < frames; ++i) {
            fresh += peer->takeFrame() != 0;
            noteAge(*peer, request, ages);
        }
        const Usage after;
        if (fresh == 0)
            throw std::runtime_error("no frame while it was measured");
        std::printf("{\"kind\": \"peer\", \"contender\": \"%s\", \"camera\": \"%s %dx%d\", \"frames\": %d, "
                    "\"microseconds\": %.1f, \"user\": %.1f, \"system\": %.1f, \"page_faults\": %.2f, "
                    "\"middle_byte\": %d, \"ages\": [%s]}\n",
                    name, request.layout == "MJPG" ? "MJPEG" : request.layout.c_str(), request.width,
                    request.height, fresh, (after.user + after.system - before.user - before.system) / fresh,
                    (after.user - before.user) / fresh, (after.system - before.system) / fresh,
                    static_cast<double>(after.pageFaults - before.pageFaults) / fresh,
                    middleByte(*peer, request), ages.c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}

} // namespace bench
