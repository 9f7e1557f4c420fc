// A client of the library.
#ifndef OSTREL_BENCH_CAPTURE_CLIENT_H
#define OSTREL_BENCH_CAPTURE_CLIENT_H

#include <ostrel/capture.h>

#include <string>

namespace bench {

class Client {
public:
    Client(const std::string& identifier, int width, int height);

    // Asks again and again until there is a first frame; false when none comes within ten seconds.
    bool waitForFirstFrame();
    // The newest frame, into a record that is kept.
    const ostrel::VideoFrame& poll();

private:
    QSharedPointer<ostrel::OVideoCaptureUnix> capture_;
    ostrel::VideoFrame frame_;
};

// The identifier of a listed camera; empty where there is none with this number. In the order of the
// identifiers.
std::string identifierOf(int number);

} // namespace bench

#endif
