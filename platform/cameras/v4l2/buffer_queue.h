// The driver's few buffers: which of them the driver has, and which of them somebody still reads.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_BUFFER_QUEUE_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_BUFFER_QUEUE_H

#include "platform/cameras/buffer_frame.h"
#include "platform/cameras/figures.h"
#include "platform/cameras/pixels/pixel_pool.h"
#include "platform/cameras/v4l2/video_node.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// A buffer that the driver has filled and that is ours until it is requeued.
struct Filled {
    unsigned index = 0;
    uint32_t sequence = 0;
    bool damaged = false; // the driver says so
    int64_t time = 0;     // of CLOCK_MONOTONIC in nanoseconds; 0 where the driver uses another clock or none
    bool startOfExposure = false; // what the time is of; else the end of the frame
    // As many as the format has blocks of memory: what of each the driver has filled.
    struct Block {
        const uint8_t* data = nullptr;
        size_t bytes = 0;
    };
    std::array<Block, 3> blocks;
};

// Thread-safe. Frames keep the queue's memory alive, but neither its mappings nor the device beyond close().
class BufferQueue : public BufferOwner, public std::enable_shared_from_this<BufferQueue> {
public:
    BufferQueue(const std::shared_ptr<VideoNode>& node, const Granted& granted,
                const std::shared_ptr<Figures>& figures);
    ~BufferQueue() override;

    // Takes buffers from the driver, maps and queues them and switches the stream on. After a failure
    // everything is as before. The number is the errno; `step` names the call.
    int open(std::string& step);
    // Turns what frames still hold into memory of their own, switches the stream off, unmaps and frees.
    // Waits for conversions in progress.
    void close();

    // 0, or the errno of the kernel: EAGAIN when there is none yet.
    int dequeue(Filled& filled);
    // Gives a buffer back. What the driver refuses is offered again at the next call of requeueRefused().
    void requeue(unsigned index);
    // 0, or the errno of the last refusal when the driver is left without a buffer.
    int requeueRefused();

    // The picture in a buffer. Its planes have no more bytes than the driver has filled.
    pixels::Picture picture(const Filled& filled) const;
    // A frame that holds the buffer until it is dropped, or a copy when the driver would be left with too
    // few.
    std::shared_ptr<CameraFrame> frame(const Filled& filled);

    const Granted& granted() const { return granted_; }

private:
    enum class Place { Driver, Ours, Refused };
    struct Mapping {
        void* address = nullptr;
        size_t length = 0;
    };
    struct Buffer {
        std::array<Mapping, 3> mappings; // one for each block of memory
        Place place = Place::Ours;
        BufferFrame* frame = nullptr; // that reads it
    };

    int request();
    int map(unsigned index);
    int map(Mapping& mapping, size_t length, long offset);
    int queue(unsigned index);
    void release();
    void unmap();
    unsigned count(Place place) const;
    uint32_t type() const;
    FrameFacts factsOf(const Filled& filled) const;
    void dropped(BufferFrame& frame, unsigned index) override;

    mutable std::mutex mutex_;
    std::shared_ptr<VideoNode> node_; // null once closed
    const Granted granted_;
    FrameFacts common_; // what the facts of all frames have in common
    const std::shared_ptr<Figures> figures_;
    const std::shared_ptr<pixels::PixelPool> pool_;
    std::vector<Buffer> buffers_;
    bool requested_ = false;
    int refusal_ = 0;
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
