// Clients of the library.
#ifndef OSTREL_BENCH_CAPTURE_CLIENT_H
#define OSTREL_BENCH_CAPTURE_CLIENT_H

#include <ostrel/capture.h>
#include <ostrel/next_frame.h>

#include <memory>
#include <string>
#include <vector>

namespace bench {

class Client {
public:
    Client(const std::string& identifier, int width, int height);

    // Asks again and again until there is a frame of this number or a later one; false when none comes within
    // ten seconds.
    bool waitForFrame(uint32_t number);
    // The newest frame, into a record that is kept.
    const ostrel::VideoFrame& poll();

private:
    QSharedPointer<ostrel::OVideoCaptureUnix> capture_;
    ostrel::VideoFrame frame_;
};

int bytesOf(ostrel::OVideoPixels format);

// Waits for frames, which are written to `pixels`.
class WaitingClient {
public:
    WaitingClient(const std::string& identifier, int width, int height, ostrel::OVideoPixels format,
                  uint8_t* pixels);

    // False when none comes within ten seconds.
    bool next();
    const ostrel::OVideoFrameFacts& facts() const { return facts_; }

private:
    const int stride_;
    const size_t bytes_;
    const ostrel::OVideoPixels format_;
    uint8_t* const pixels_;
    QSharedPointer<ostrel::OVideoCaptureUnix> capture_;
    std::unique_ptr<ostrel::OVideoFrameReader> reader_;
    ostrel::OVideoFrameFacts facts_;
};

// The identifier of a listed camera; empty where there is none with this number. In the order of the
// identifiers.
std::string identifierOf(int number);

} // namespace bench

#endif
