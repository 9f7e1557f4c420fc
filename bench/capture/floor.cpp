#include "bench/capture/floor.h"

#include "bench/capture/pictures.h"
#include "platform/cameras/pixels/jpeg.h"

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

Floor::Floor(const std::shared_ptr<TimedKernel>& kernel, const CameraModel& model)
    : kernel_(kernel), model_(model), descriptor_(kernel->open("/dev/video0", O_RDWR)) {
    const size_t bytes = static_cast<size_t>(model.width) * static_cast<size_t>(model.height) * 4;
    converted_.resize(bytes);
    between_.resize(bytes);
    mine_.resize(bytes);
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

void Floor::passFrame() {
    v4l2_buffer buffer = dequeue();
    kernel_->ioctl(descriptor_, VIDIOC_QBUF, &buffer);
}

void Floor::takeFrame() {
    v4l2_buffer buffer = dequeue();
    convert(static_cast<const uint8_t*>(buffers_[buffer.index].first), buffer.bytesused);
    std::memcpy(between_.data(), converted_.data(), between_.size());
    std::memcpy(mine_.data(), between_.data(), mine_.size());
    kernel_->ioctl(descriptor_, VIDIOC_QBUF, &buffer);
}

void Floor::convert(const uint8_t* bytes, size_t size) {
    const int w = model_.width, h = model_.height;
    if (model_.fourcc == V4L2_PIX_FMT_YUYV)
        libyuv::YUY2ToARGB(bytes, w * 2, converted_.data(), w * 4, w, h);
    else if (model_.fourcc == V4L2_PIX_FMT_NV12)
        libyuv::NV12ToARGB(bytes, w, bytes + static_cast<ptrdiff_t>(w) * h, w, converted_.data(), w * 4, w,
                           h);
    else
        ostrel::cameras::pixels::decodeJpeg(
            bytes, size, {ostrel::cameras::pixels::OutputFormat::Bgra, converted_.data(), w, h, w * 4});
}

} // namespace bench
