// One camera with a client that polls it, stops and starts it.
#ifndef OSTREL_TESTS_SOAK_STATION_H
#define OSTREL_TESTS_SOAK_STATION_H

#include <ostrel/capture.h>
#include <ostrel/virtual_camera.h>

#include <cstdint>
#include <string>

namespace soak {

struct Totals {
    uint64_t polls = 0;
    uint64_t frames = 0; // new ones among them
    uint64_t starts = 0;
    uint64_t torn = 0;      // pictures that the pattern's check sums reject
    uint64_t backwards = 0; // a frame number or a decoded counter that went back
    uint64_t silent = 0;    // captures without a frame for longer than TIMEOUT
};

class Station {
public:
    Station(int index, double framesPerSecond);

    void start(int quality);
    void stop();
    bool running() const { return !capture_.isNull(); }
    // Asks for the newest frame and looks at it; now is in milliseconds of any steady clock.
    void poll(int64_t now, Totals& totals);

private:
    void check(Totals& totals);

    std::string identifier_;
    ostrel::OVideoTestPatternCamera camera_;
    QSharedPointer<ostrel::OVideoCaptureUnix> capture_;
    ostrel::VideoFrame frame_; // kept, so that polling allocates nothing
    uint32_t lastNumber_ = 0;
    uint32_t lastCounter_ = 0;
    int64_t lastNews_ = -1;
};

} // namespace soak

#endif
