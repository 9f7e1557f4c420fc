#include "bench/capture/timed_camera.h"

#include "bench/capture/pictures.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace bench {

namespace {

const int64_t SECOND = 1000000000;
const unsigned MOST_BUFFERS = 32;

int fail(int number) {
    errno = number;
    return -1;
}

template <size_t N>
void text(__u8 (&field)[N], const char* chars) {
    std::strncpy(reinterpret_cast<char*>(field), chars, N - 1);
}

} // namespace

int64_t nowNanoseconds() {
    timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * SECOND + now.tv_nsec;
}

TimedCamera::TimedCamera(const CameraModel& model, const std::shared_ptr<const std::vector<uint8_t>>& picture)
    : model_(model), picture_(picture),
      timer_(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {}

TimedCamera::~TimedCamera() {
    v4l2_requestbuffers none = {};
    requestBuffers(none);
    ::close(timer_);
}

int TimedCamera::ioctl(unsigned long request, void* argument) {
    // By its number: this file is also part of a library that stands in for ioctl().
    ::syscall(SYS_ioctl, timer_, 0, nullptr);
    std::lock_guard<std::mutex> lock(mutex_);
    return answer(request, argument);
}

int TimedCamera::answer(unsigned long request, void* argument) {
    switch (static_cast<uint32_t>(request)) {
    case VIDIOC_QUERYCAP:
        return describe(*static_cast<v4l2_capability*>(argument));
    case VIDIOC_ENUM_FMT:
        return describe(*static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
        return describe(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
        return describe(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_ENUMINPUT:
        return describe(*static_cast<v4l2_input*>(argument));
    case VIDIOC_G_INPUT:
        *static_cast<int*>(argument) = 0;
        return 0;
    case VIDIOC_S_INPUT:
        return *static_cast<int*>(argument) == 0 ? 0 : fail(EINVAL);
    case VIDIOC_G_FMT:
    case VIDIOC_S_FMT:
    case VIDIOC_TRY_FMT:
        return fill(*static_cast<v4l2_format*>(argument));
    case VIDIOC_G_PARM:
    case VIDIOC_S_PARM:
        return fill(*static_cast<v4l2_streamparm*>(argument));
    case VIDIOC_REQBUFS:
        return requestBuffers(*static_cast<v4l2_requestbuffers*>(argument));
    case VIDIOC_QUERYBUF:
        return queryBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_QBUF:
        return queue(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_DQBUF:
        return dequeue(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
        return switchStream(true);
    case VIDIOC_STREAMOFF:
        return switchStream(false);
    default:
        return fail(ENOTTY);
    }
}

int TimedCamera::describe(v4l2_capability& caps) const {
    caps = {};
    text(caps.driver, "timed");
    text(caps.card, "Timed camera");
    text(caps.bus_info, "platform:timed");
    caps.device_caps = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    caps.capabilities = caps.device_caps | V4L2_CAP_DEVICE_CAPS;
    caps.version = 0x050000;
    return 0;
}

int TimedCamera::describe(v4l2_fmtdesc& format) const {
    if (format.index > 0 || format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return fail(EINVAL);
    format.pixelformat = model_.fourcc;
    format.flags = model_.fourcc == V4L2_PIX_FMT_MJPEG ? V4L2_FMT_FLAG_COMPRESSED : 0u;
    text(format.description, "the only one");
    return 0;
}

int TimedCamera::describe(v4l2_frmsizeenum& size) const {
    if (size.index > 0 || size.pixel_format != model_.fourcc)
        return fail(EINVAL);
    size.type = V4L2_FRMSIZE_TYPE_DISCRETE;
    size.discrete.width = static_cast<uint32_t>(model_.width);
    size.discrete.height = static_cast<uint32_t>(model_.height);
    return 0;
}

int TimedCamera::describe(v4l2_frmivalenum& interval) const {
    if (interval.index > 0 || interval.pixel_format != model_.fourcc)
        return fail(EINVAL);
    interval.type = V4L2_FRMIVAL_TYPE_DISCRETE;
    interval.discrete.numerator = 1;
    interval.discrete.denominator = model_.rate;
    return 0;
}

int TimedCamera::describe(v4l2_input& input) const {
    if (input.index > 0)
        return fail(EINVAL);
    input = {};
    text(input.name, "Camera 1");
    input.type = V4L2_INPUT_TYPE_CAMERA;
    return 0;
}

int TimedCamera::fill(v4l2_format& format) const {
    if (format.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return fail(EINVAL);
    v4l2_pix_format& pix = format.fmt.pix;
    pix = {};
    pix.width = static_cast<uint32_t>(model_.width);
    pix.height = static_cast<uint32_t>(model_.height);
    pix.pixelformat = model_.fourcc;
    pix.field = V4L2_FIELD_NONE;
    pix.bytesperline = bytesPerLine(model_.fourcc, model_.width);
    pix.sizeimage = static_cast<uint32_t>(picture_->size());
    pix.colorspace = model_.fourcc == V4L2_PIX_FMT_MJPEG ? V4L2_COLORSPACE_JPEG : V4L2_COLORSPACE_SMPTE170M;
    return 0;
}

int TimedCamera::fill(v4l2_streamparm& parameters) const {
    if (parameters.type != V4L2_BUF_TYPE_VIDEO_CAPTURE)
        return fail(EINVAL);
    v4l2_captureparm& capture = parameters.parm.capture;
    capture = {};
    capture.capability = V4L2_CAP_TIMEPERFRAME;
    capture.timeperframe.numerator = 1;
    capture.timeperframe.denominator = model_.rate;
    return 0;
}

int TimedCamera::requestBuffers(v4l2_requestbuffers& request) {
    if (request.count > 0 && request.memory != V4L2_MEMORY_MMAP)
        return fail(EINVAL);
    switchStream(false);
    if (mapped_)
        ::munmap(mapped_, length_ * queued_.size());
    if (memory_ >= 0)
        ::close(memory_);
    mapped_ = nullptr;
    memory_ = -1;
    queued_.assign(request.count < MOST_BUFFERS ? request.count : MOST_BUFFERS, false);
    request.count = static_cast<uint32_t>(queued_.size());
    request.capabilities = V4L2_BUF_CAP_SUPPORTS_MMAP;
    if (queued_.empty())
        return 0;
    length_ = (picture_->size() + 4095) / 4096 * 4096;
    memory_ = ::memfd_create("frames", MFD_CLOEXEC);
    if (memory_ < 0 || ::ftruncate(memory_, static_cast<off_t>(length_ * queued_.size())) != 0)
        return fail(ENOMEM);
    void* address =
        reinterpret_cast<void*>(::syscall(SYS_mmap, nullptr, length_ * queued_.size(), PROT_READ | PROT_WRITE,
                                          MAP_SHARED | MAP_POPULATE, memory_, 0));
    if (address == MAP_FAILED)
        return fail(ENOMEM);
    mapped_ = static_cast<uint8_t*>(address);
    for (size_t i = 0; i < queued_.size(); ++i)
        std::memcpy(mapped_ + i * length_, picture_->data(), picture_->size());
    return 0;
}

int TimedCamera::queryBuffer(v4l2_buffer& buffer) const {
    if (buffer.index >= queued_.size())
        return fail(EINVAL);
    const uint32_t index = buffer.index;
    buffer = {};
    buffer.index = index;
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.length = static_cast<uint32_t>(length_);
    buffer.m.offset = static_cast<uint32_t>(length_ * index);
    buffer.flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | (queued_[index] ? V4L2_BUF_FLAG_QUEUED : 0u);
    return 0;
}

void* TimedCamera::mmap(size_t length, long offset) {
    // The pages are there, as a driver's are: touching them for the first time is no page fault.
    return reinterpret_cast<void*>(::syscall(SYS_mmap, nullptr, length, PROT_READ | PROT_WRITE,
                                             MAP_SHARED | MAP_POPULATE, memory_, offset));
}

int TimedCamera::queue(v4l2_buffer& buffer) {
    ++calls_;
    if (buffer.index >= queued_.size() || queued_[buffer.index])
        return fail(EINVAL);
    advance();
    queued_[buffer.index] = true;
    waiting_.push_back(buffer.index);
    return 0;
}

int TimedCamera::dequeue(v4l2_buffer& buffer) {
    ++calls_;
    if (!streaming_)
        return fail(EINVAL);
    const uint64_t lostBefore = lost_;
    advance();
    if (done_.empty()) {
        if (lost_ != lostBefore)
            setTimer(arrival(sequence_)); // it has expired for a frame that nobody will get
        return fail(EAGAIN);
    }
    const Done done = done_.front();
    done_.pop_front();
    queued_[done.buffer] = false;
    stamp(mapped_ + done.buffer * length_, model_.fourcc, model_.width, done.sequence);
    buffer.index = done.buffer;
    queryBuffer(buffer);
    buffer.bytesused = static_cast<uint32_t>(picture_->size());
    buffer.sequence = done.sequence;
    const int64_t when = arrival(done.sequence);
    buffer.timestamp.tv_sec = when / SECOND;
    buffer.timestamp.tv_usec = when % SECOND / 1000;
    if (done_.empty())
        setTimer(arrival(sequence_)); // else it stays expired
    return 0;
}

int TimedCamera::switchStream(bool on) {
    if (!on) {
        streaming_ = false;
        waiting_.clear();
        done_.clear();
        queued_.assign(queued_.size(), false);
        setTimer(0);
        return 0;
    }
    sequence_ = 0;
    started_ = nowNanoseconds();
    streaming_ = true;
    setTimer(arrival(0));
    return 0;
}

// Fills buffers with the frames that are due.
void TimedCamera::advance() {
    if (!streaming_)
        return;
    const int64_t now = nowNanoseconds();
    for (; arrival(sequence_) <= now; ++sequence_) {
        if (waiting_.empty()) {
            ++lost_;
            continue;
        }
        done_.push_back({waiting_.front(), sequence_});
        waiting_.pop_front();
    }
}

int64_t TimedCamera::arrival(uint32_t number) const {
    return started_ ? started_ + (static_cast<int64_t>(number) + 1) * period() : 0;
}

// Absolute; 0 switches it off.
void TimedCamera::setTimer(int64_t at) const {
    itimerspec when = {};
    when.it_value.tv_sec = at / SECOND;
    when.it_value.tv_nsec = at % SECOND;
    ::timerfd_settime(timer_, TFD_TIMER_ABSTIME, &when, nullptr);
}

uint64_t TimedCamera::streamCalls() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
}

uint64_t TimedCamera::lost() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return lost_;
}

} // namespace bench
