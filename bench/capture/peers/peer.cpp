#include "bench/capture/peers/peer.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
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

} // namespace

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
        for (int i = 0; i < frames; ++i)
            fresh += peer->takeFrame() != 0;
        const Usage after;
        std::printf("{\"kind\": \"peer\", \"contender\": \"%s\", \"camera\": \"%s %dx%d\", \"frames\": %d, "
                    "\"microseconds\": %.1f, \"user\": %.1f, \"system\": %.1f, \"page_faults\": %.2f, "
                    "\"middle_byte\": %d}\n",
                    name, request.layout == "MJPG" ? "MJPEG" : request.layout.c_str(), request.width,
                    request.height, fresh, (after.user + after.system - before.user - before.system) / fresh,
                    (after.user - before.user) / fresh, (after.system - before.system) / fresh,
                    static_cast<double>(after.pageFaults - before.pageFaults) / fresh, peer->sample());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[0], error.what());
        return 1;
    }
    return 0;
}

} // namespace bench
