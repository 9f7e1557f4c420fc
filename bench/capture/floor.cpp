#include "bench/capture/floor.h"

#include "bench/capture/pictures.h"
#include "platform/cameras/pixels/convert.h"

#include <cstring>
#include <fcntl.h>
#include <libyuv.h>
#include <sys/mman.h>

namespace bench {

namespace {
const uint32_t BUFFERS = 5; // as the library asks for

v4l2_buffer emptyBuffer() {
    v4l2_buffer buffer = {};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    return buffer;
}
} // namespace

Floor::Floor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model, uint8_t* pixels)
    : kernel_(kernel), model_(model), descriptor_(kernel->open("/dev/video0", O_RDWR)), mine_(pixels) {
    const size_t bytes = static_cast<size_t>(model.width) * static_cast<size_t>(model.height) * 4;
    converted_.resize(bytes);
    between_.resize(bytes);
    v4l2_requestbuffers request = {};
    request.count = BUFFERS;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    kernel_->ioctl(descriptor_, VIDIOC_REQBUFS, &request);
    for (uint32_t i = 0; i < request.count; ++i) {
        v4l2_buffer buffer = emptyBuffer();
        buffer.index = i;
        kernel_->ioctl(descriptor_, VIDIOC_QUERYBUF, &buffer);
        buffers_.emplace_back(kernel_->mmap(buffer.length, descriptor_, buffer.m.offset), buffer.length);
        kernel_->ioctl(descriptor_, VIDIOC_QBUF, &buffer);
    }
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    kernel_->ioctl(descriptor_, VIDIOC_STREAMON, &type);
}

Floor::~Floor() {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    kernel_->ioctl(descriptor_, VIDIOC_STREAMOFF, &type);
    for (const auto& buffer : buffers_)
        kernel_->munmap(buffer.first, buffer.second);
    v4l2_requestbuffers none = {};
    none.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    none.memory = V4L2_MEMORY_MMAP;
    kernel_->ioctl(descriptor_, VIDIOC_REQBUFS, &none);
    kernel_->close(descriptor_);
}

v4l2_buffer Floor::dequeue() {
    v4l2_buffer buffer = emptyBuffer();
    do {
        pollfd ready = {descriptor_, POLLIN, 0};
        kernel_->poll(&ready, 1, -1);
    } while (kernel_->ioctl(descriptor_, VIDIOC_DQBUF, &buffer) != 0);
    return buffer;
}

void Floor::requeue(v4l2_buffer& buffer) {
    kernel_->ioctl(descriptor_, VIDIOC_QBUF, &buffer);
}

void Floor::passFrame() {
    v4l2_buffer buffer = dequeue();
    requeue(buffer);
}

void Floor::takeFrame() {
    v4l2_buffer buffer = dequeue();
    convertTo(converted_.data(), buffer, OutputFormat::Bgra);
    std::memcpy(between_.data(), converted_.data(), between_.size());
    std::memcpy(mine_, between_.data(), between_.size());
    requeue(buffer);
}

void Floor::convertFrame(OutputFormat format) {
    v4l2_buffer buffer = dequeue();
    convert(buffer, format);
    requeue(buffer);
}

void Floor::convert(const v4l2_buffer& buffer, OutputFormat format) {
    convertTo(mine_, buffer, format);
}

void Floor::convertTo(uint8_t* to, const v4l2_buffer& buffer, OutputFormat format) {
    namespace pixels = ostrel::cameras::pixels;
    const int w = model_.width, h = model_.height;
    const auto* const bytes = static_cast<const uint8_t*>(buffers_[buffer.index].first);
    const bool bgra = format == OutputFormat::Bgra;
    const int stride = w * pixels::bytesPerPixel(format);
    if (model_.fourcc == V4L2_PIX_FMT_YUYV && bgra) {
        libyuv::YUY2ToARGB(bytes, w * 2, to, stride, w, h);
        return;
    }
    if (model_.fourcc == V4L2_PIX_FMT_NV12 && format != OutputFormat::Grey) {
        auto* const convert = bgra ? libyuv::NV12ToARGB : libyuv::NV12ToRGB24;
        convert(bytes, w, bytes + static_cast<ptrdiff_t>(w) * h, w, to, stride, w, h);
        return;
    }
    pixels::Picture picture;
    picture.layout = model_.fourcc == V4L2_PIX_FMT_YUYV   ? pixels::Layout::Yuyv
                     : model_.fourcc == V4L2_PIX_FMT_NV12 ? pixels::Layout::Nv12
                                                          : pixels::Layout::Jpeg;
    picture.width = w;
    picture.height = h;
    pixels::setBlock(picture, bytes, buffer.bytesused, pixels::minimumStride(picture.layout, w));
    pixels::convert(picture, {format, to, w, h, stride}, pool_);
}

TwoThreadFloor::TwoThreadFloor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model,
                               uint8_t* pixels)
    : floor_(kernel, model, pixels), thread_([this] { deliver(); }) {}

TwoThreadFloor::~TwoThreadFloor() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
    }
    thread_.join();
}

void TwoThreadFloor::deliver() {
    for (;;) {
        v4l2_buffer buffer = floor_.dequeue();
        std::unique_lock<std::mutex> lock(mutex_);
        if (ended_)
            return;
        if (full_)
            floor_.requeue(newest_);
        newest_ = buffer;
        full_ = true;
        lock.unlock();
        changed_.notify_one();
    }
}

void TwoThreadFloor::convertFrame(OutputFormat format) {
    v4l2_buffer mine;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return full_; });
        mine = newest_;
        full_ = false;
    }
    floor_.convert(mine, format);
    floor_.requeue(mine);
}

} // namespace bench
