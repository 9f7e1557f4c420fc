// Locks: the queue's own, then a frame's. A frame takes the queue's lock only in its destructor, and holds
// none then.
#include "platform/cameras/v4l2/buffer_queue.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pixels/pixel_format.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <linux/videodev2.h>
#include <sys/mman.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// One held as the newest, one being converted, one being delivered, two for the driver to fill in turn.
const unsigned WANTED_BUFFERS = 5;
// Some drivers allow no more; the frames are then copies.
const unsigned FEWEST_BUFFERS = 2;
// No driver grants more; a number beyond it is a mistake.
const unsigned MOST_BUFFERS = 32;

// A buffer and, for the interface of several planes, its planes.
struct KernelBuffer {
    v4l2_buffer buffer = {};
    std::array<v4l2_plane, 3> planes = {};

    KernelBuffer(const Granted& granted, unsigned index) {
        buffer.type = granted.multiplanar ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE;
        buffer.memory = V4L2_MEMORY_MMAP;
        buffer.index = index;
        if (granted.multiplanar) {
            buffer.m.planes = planes.data();
            buffer.length = granted.memoryPlanes;
        }
    }
    bool severalPlanes() const { return buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE; }
    size_t length(unsigned plane) const { return severalPlanes() ? planes[plane].length : buffer.length; }
    long offset(unsigned plane) const {
        return severalPlanes() ? planes[plane].m.mem_offset : buffer.m.offset;
    }
    size_t begin(unsigned plane) const { return severalPlanes() ? planes[plane].data_offset : 0; }
    size_t end(unsigned plane) const { return severalPlanes() ? planes[plane].bytesused : buffer.bytesused; }
    // 0 for a time that is none, too.
    int64_t monotonicTime() const {
        const bool monotonic =
            (buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
        const int64_t seconds = buffer.timestamp.tv_sec, microseconds = buffer.timestamp.tv_usec;
        const bool sane = seconds >= 0 && seconds < INT32_MAX && microseconds >= 0 && microseconds < 1000000;
        return monotonic && sane ? seconds * 1000000000 + microseconds * 1000 : 0;
    }
    bool startOfExposure() const {
        return (buffer.flags & V4L2_BUF_FLAG_TSTAMP_SRC_MASK) == V4L2_BUF_FLAG_TSTAMP_SRC_SOE;
    }
};

} // namespace

BufferQueue::BufferQueue(const std::shared_ptr<VideoNode>& node, const Granted& granted,
                         const std::shared_ptr<Figures>& figures)
    : node_(node), granted_(granted), figures_(figures), pool_(std::make_shared<pixels::PixelPool>()) {
    common_.format = pixels::fourccText(granted_.fourcc);
    common_.size = granted_.size;
}

BufferQueue::~BufferQueue() {
    close();
}

uint32_t BufferQueue::type() const {
    return granted_.multiplanar ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE;
}

int BufferQueue::open(std::string& step) {
    std::lock_guard<std::mutex> lock(mutex_);
    step = "VIDIOC_REQBUFS";
    int error = request();
    for (unsigned i = 0; i < buffers_.size() && !error; ++i) {
        step = "mapping the buffers";
        error = map(i);
    }
    for (unsigned i = 0; i < buffers_.size() && !error; ++i) {
        step = "VIDIOC_QBUF";
        error = queue(i);
    }
    if (!error) {
        step = "VIDIOC_STREAMON";
        int which = static_cast<int>(type());
        error = node_->ioctl(VIDIOC_STREAMON, &which);
    }
    if (error)
        release();
    return error;
}

int BufferQueue::request() {
    v4l2_requestbuffers request = {};
    request.type = type();
    request.memory = V4L2_MEMORY_MMAP;
    request.count = WANTED_BUFFERS;
    if (const int error = node_->ioctl(VIDIOC_REQBUFS, &request))
        return error;
    requested_ = true;
    if (request.count < FEWEST_BUFFERS || request.count > MOST_BUFFERS)
        return ENOMEM;
    buffers_.resize(request.count);
    return 0;
}

int BufferQueue::map(unsigned index) {
    KernelBuffer info(granted_, index);
    if (const int error = node_->ioctl(VIDIOC_QUERYBUF, &info.buffer))
        return error;
    for (unsigned plane = 0; plane < granted_.memoryPlanes; ++plane)
        if (const int error = map(buffers_[index].mappings[plane], info.length(plane), info.offset(plane)))
            return error;
    return 0;
}

int BufferQueue::map(Mapping& mapping, size_t length, long offset) {
    if (length == 0)
        return EINVAL;
    void* const address = node_->kernel().mmap(length, node_->descriptor(), offset);
    if (address == MAP_FAILED)
        return errno;
    mapping = {address, length};
    return 0;
}

int BufferQueue::queue(unsigned index) {
    KernelBuffer request(granted_, index);
    const int error = node_->ioctl(VIDIOC_QBUF, &request.buffer);
    buffers_[index].place = error ? Place::Refused : Place::Driver;
    return error;
}

void BufferQueue::close() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!node_)
        return;
    for (Buffer& buffer : buffers_)
        if (buffer.frame)
            buffer.frame->detach();
    release();
    pool_->retire();
    node_.reset();
}

void BufferQueue::release() {
    int which = static_cast<int>(type());
    if (requested_)
        node_->ioctl(VIDIOC_STREAMOFF, &which); // also after a failed STREAMON: it takes the buffers back
    unmap();
    if (requested_) {
        v4l2_requestbuffers none = {};
        none.type = type();
        none.memory = V4L2_MEMORY_MMAP;
        node_->ioctl(VIDIOC_REQBUFS, &none);
        requested_ = false;
    }
}

void BufferQueue::unmap() {
    for (const Buffer& buffer : buffers_)
        for (const Mapping& mapping : buffer.mappings)
            if (mapping.address)
                node_->kernel().munmap(mapping.address, mapping.length);
    buffers_.clear();
}

int BufferQueue::dequeue(Filled& filled) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!node_)
        return ENODEV;
    KernelBuffer info(granted_, 0);
    if (const int error = node_->ioctl(VIDIOC_DQBUF, &info.buffer))
        return error;
    if (info.buffer.index >= buffers_.size() || buffers_[info.buffer.index].place != Place::Driver) {
        figures_->drop(Drop::UnknownBuffer);
        return EIO;
    }
    Buffer& buffer = buffers_[info.buffer.index];
    buffer.place = Place::Ours;
    filled.index = info.buffer.index;
    filled.sequence = info.buffer.sequence;
    filled.damaged = info.buffer.flags & V4L2_BUF_FLAG_ERROR;
    filled.time = info.monotonicTime();
    filled.startOfExposure = info.startOfExposure();
    for (unsigned plane = 0; plane < granted_.memoryPlanes; ++plane) {
        const Mapping& mapping = buffer.mappings[plane];
        const size_t end = std::min(info.end(plane), mapping.length);
        const size_t begin = std::min(info.begin(plane), end);
        filled.blocks[plane] = {static_cast<const uint8_t*>(mapping.address) + begin, end - begin};
    }
    return 0;
}

void BufferQueue::requeue(unsigned index) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!node_)
        return;
    if (const int error = queue(index))
        refusal_ = error;
}

int BufferQueue::requeueRefused() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!node_ || refusal_ == 0)
        return 0;
    const int error = refusal_;
    refusal_ = 0;
    for (unsigned i = 0; i < buffers_.size(); ++i)
        if (buffers_[i].place == Place::Refused)
            if (const int again = queue(i))
                refusal_ = again;
    return count(Place::Driver) == 0 ? error : 0;
}

unsigned BufferQueue::count(Place place) const {
    return static_cast<unsigned>(std::count_if(buffers_.begin(), buffers_.end(),
                                               [place](const Buffer& b) { return b.place == place; }));
}

pixels::Picture BufferQueue::picture(const Filled& filled) const {
    pixels::Picture picture;
    picture.layout = granted_.layout;
    picture.matrix = granted_.matrix;
    picture.width = granted_.size.width;
    picture.height = granted_.size.height;
    picture.fields = granted_.fields;
    if (granted_.memoryPlanes == 1) {
        pixels::setBlock(picture, filled.blocks[0].data, filled.blocks[0].bytes, granted_.strides[0]);
        return picture;
    }
    for (unsigned plane = 0; plane < granted_.memoryPlanes; ++plane)
        picture.planes[plane] = {filled.blocks[plane].data, filled.blocks[plane].bytes,
                                 granted_.strides[plane]};
    return picture;
}

FrameFacts BufferQueue::factsOf(const Filled& filled) const {
    FrameFacts facts = common_;
    facts.sequence = filled.sequence;
    facts.time = filled.time != 0 ? filled.time : monotonicNanoseconds();
    if (filled.time != 0)
        facts.source = filled.startOfExposure ? TimeSource::StartOfExposure : TimeSource::EndOfFrame;
    return facts;
}

std::shared_ptr<CameraFrame> BufferQueue::frame(const Filled& filled) {
    auto frame = std::make_shared<BufferFrame>(shared_from_this(), filled.index, picture(filled),
                                               factsOf(filled), pool_, figures_);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const unsigned left = buffers_.size() <= FEWEST_BUFFERS ? 1 : 2;
        if (count(Place::Driver) >= left) {
            buffers_[filled.index].frame = frame.get();
            return frame;
        }
    }
    frame->detach();
    requeue(filled.index);
    return frame;
}

void BufferQueue::dropped(BufferFrame& frame, unsigned index) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!node_ || index >= buffers_.size() || buffers_[index].frame != &frame)
        return; // a copy, or the stream has ended
    buffers_[index].frame = nullptr;
    if (const int error = queue(index))
        refusal_ = error;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
