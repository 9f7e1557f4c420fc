// The bare work of a frame, by one thread and without any library of ours: wait, dequeue, convert into one
// buffer that is used again and again, copy to a second and a third, requeue. The JPEG decoder is the
// library's own, called as the library calls it.
#ifndef OSTREL_BENCH_CAPTURE_FLOOR_H
#define OSTREL_BENCH_CAPTURE_FLOOR_H

#include "bench/capture/timed_kernel.h"

namespace bench {

class Floor {
public:
    Floor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model);
    ~Floor();
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;

    // Waits for the next frame and does its work.
    void takeFrame();
    // The same for a frame that nobody wants: dequeue and requeue.
    void passFrame();

private:
    v4l2_buffer dequeue();
    void convert(const uint8_t* bytes, size_t size);

    const std::shared_ptr<TimedKernel> kernel_;
    const CameraModel model_;
    int descriptor_;
    std::vector<std::pair<void*, size_t>> buffers_;
    std::vector<uint8_t> converted_;
    std::vector<uint8_t> between_;
    std::vector<uint8_t> mine_;
};

} // namespace bench

#endif
