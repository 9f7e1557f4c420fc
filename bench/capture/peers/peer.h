// What a camera costs by one way of reading it: a program for each way, so that each has a process to itself.
//
// usage: PROGRAM DEVICE WIDTH HEIGHT YUYV|NV12|MJPG RATE FRAMES
//
// Takes every frame as 32-bit B, G, R, A into memory that is kept, unless the way's own habit is another, and
// writes one line of JSON: processor time for each frame, and of a timed camera how old each frame was when
// the program had it.
#ifndef OSTREL_BENCH_CAPTURE_PEER_H
#define OSTREL_BENCH_CAPTURE_PEER_H

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Request {
    std::string device;
    int width = 0;
    int height = 0;
    std::string layout;
    int rate = 0;
};

// One way of reading a camera. Throws std::runtime_error when it cannot.
class Peer {
public:
    virtual ~Peer() = default;
    // Has the next frame ready. How many of the camera's frames that took; 0 when it was the same as before.
    virtual unsigned takeFrame() = 0;
    // The frame's pixels, of as many bytes, rows without padding.
    virtual const uint8_t* pixels(int& bytesPerPixel) const = 0;
    // When the timed camera had the frame with this number, in nanoseconds of CLOCK_MONOTONIC; 0 when the
    // camera is another one.
    virtual int64_t arrival(uint32_t number) const;
};

int runPeer(const char* name, int argc, char** argv, Peer* (*open)(const Request& request));

} // namespace bench

#endif
