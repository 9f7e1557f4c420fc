// The bare work of a frame, without the framework and the classes of ours. The conversions are libyuv's;
// where it has no single call, and for JPEG, they are the library's own, called as the library calls them.
#ifndef OSTREL_BENCH_CAPTURE_FLOOR_H
#define OSTREL_BENCH_CAPTURE_FLOOR_H

#include "bench/capture/timed_kernel.h"
#include "platform/cameras/pixels/output.h"
#include "platform/cameras/pixels/pixel_pool.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace bench {

using ostrel::cameras::pixels::OutputFormat;

// By one thread. The buffers are used again and again.
class Floor {
public:
    // `pixels`: the client's memory, of four bytes a pixel.
    Floor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model, uint8_t* pixels);
    ~Floor();
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    // The work of a frame that is polled: wait, dequeue, convert, copy to a second and a third memory,
    // requeue.
    void takeFrame();
    // Of one that is waited for: convert once, copy nothing.
    void convertFrame(OutputFormat format);
    // Of one that nobody wants: dequeue and requeue.
    void passFrame();

    v4l2_buffer dequeue();
    void requeue(v4l2_buffer& buffer);
    // What was dequeued, to the client's memory.
    void convert(const v4l2_buffer& buffer, OutputFormat format);

private:
    void convertTo(uint8_t* to, const v4l2_buffer& buffer, OutputFormat format);

    const std::shared_ptr<TimedKernel> kernel_;
    const CameraModel model_;
    int descriptor_;
    std::vector<std::pair<void*, size_t>> buffers_;
    std::vector<uint8_t> converted_;
    std::vector<uint8_t> between_;
    uint8_t* const mine_;
    ostrel::cameras::pixels::PixelPool pool_;
};

// By two threads: one dequeues each frame and wakes the other, which converts and requeues it. The first must
// not wait for the second, for the driver would lose frames.
class TwoThreadFloor {
public:
    TwoThreadFloor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model, uint8_t* pixels);
    ~TwoThreadFloor();

    void convertFrame(OutputFormat format);

private:
    void deliver();

    Floor floor_;
    std::mutex mutex_; // of the next four
    std::condition_variable changed_;
    v4l2_buffer newest_ = {};
    bool full_ = false;
    bool ended_ = false;
    std::thread thread_;
};

} // namespace bench

#endif
