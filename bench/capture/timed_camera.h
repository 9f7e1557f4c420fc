// A V4L2 camera in memory. Its descriptor is a timer of the kernel's, so that waiting for a frame is real,
// and each call of it enters the kernel once, as that of a real camera does. A real camera's frames are
// written by the hardware; here the pictures stand in the buffers from the start and only get a number.
#ifndef OSTREL_BENCH_CAPTURE_TIMED_CAMERA_H
#define OSTREL_BENCH_CAPTURE_TIMED_CAMERA_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <linux/videodev2.h>
#include <memory>
#include <mutex>
#include <vector>

namespace bench {

struct CameraModel {
    uint32_t fourcc = V4L2_PIX_FMT_YUYV;
    int width = 1280;
    int height = 720;
    unsigned rate = 30; // frames a second
};

int64_t nowNanoseconds(); // CLOCK_MONOTONIC

// One opened descriptor. Thread-safe. Fails as the kernel does, with -1 and errno.
class TimedCamera {
public:
    // picture: one in the model's layout.
    TimedCamera(const CameraModel& model, const std::shared_ptr<const std::vector<uint8_t>>& picture);
    ~TimedCamera();
    TimedCamera(const TimedCamera&) = delete;
    TimedCamera& operator=(const TimedCamera&) = delete;

    int descriptor() const { return timer_; }
    int ioctl(unsigned long request, void* argument);
    void* mmap(size_t length, long offset); // to be given back by the system's munmap()

    // When frame `number` was there; 0 before the stream runs.
    int64_t arrival(uint32_t number) const;
    int64_t period() const { return 1000000000 / model_.rate; } // nanoseconds
    // How often the stream was asked something, and frames for which it had no buffer.
    uint64_t streamCalls() const;
    uint64_t lost() const;

private:
    struct Done {
        uint32_t buffer;
        uint32_t sequence;
    };

    int answer(unsigned long request, void* argument);
    int describe(v4l2_capability& caps) const;
    int describe(v4l2_fmtdesc& format) const;
    int describe(v4l2_frmsizeenum& size) const;
    int describe(v4l2_frmivalenum& interval) const;
    int describe(v4l2_input& input) const;
    int fill(v4l2_format& format) const;
    int fill(v4l2_streamparm& parameters) const;
    int requestBuffers(v4l2_requestbuffers& request);
    int queryBuffer(v4l2_buffer& buffer) const;
    int queue(v4l2_buffer& buffer);
    int dequeue(v4l2_buffer& buffer);
    int switchStream(bool on);
    void advance();
    void setTimer(int64_t at) const;

    const CameraModel model_;
    const std::shared_ptr<const std::vector<uint8_t>> picture_;
    const int timer_;
    int memory_ = -1;
    uint8_t* mapped_ = nullptr; // all buffers
    size_t length_ = 0;         // of one buffer
    mutable std::mutex mutex_;
    std::vector<bool> queued_;
    std::deque<uint32_t> waiting_;
    std::deque<Done> done_;
    bool streaming_ = false;
    int64_t started_ = 0;
    uint32_t sequence_ = 0; // the next
    uint64_t calls_ = 0;
    uint64_t lost_ = 0;
};

} // namespace bench

#endif
