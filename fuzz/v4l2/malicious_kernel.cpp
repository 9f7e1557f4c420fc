#include "fuzz/v4l2/malicious_kernel.h"

#include "fuzz/support/check.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <iterator>

namespace fuzz {

namespace {

const uint32_t kFourccs[] = {V4L2_PIX_FMT_YUYV,   V4L2_PIX_FMT_MJPEG,  V4L2_PIX_FMT_NV12,
                             V4L2_PIX_FMT_YUV420, V4L2_PIX_FMT_RGB24,  V4L2_PIX_FMT_YUV422P,
                             V4L2_PIX_FMT_GREY,   V4L2_PIX_FMT_NV21,   V4L2_PIX_FMT_YVU420,
                             V4L2_PIX_FMT_RGB565, V4L2_PIX_FMT_XBGR32, V4L2_PIX_FMT_VYUY};

const int kErrors[] = {EINVAL, EIO,    EAGAIN, EBUSY,  ENODEV, ENOMEM, ENOSPC, EPERM,
                       ENXIO,  ENOTTY, EINTR,  EACCES, EPIPE,  EFAULT, ERANGE, ENOENT};

// Numbers at which sizes, counts and offsets go wrong.
const uint32_t kCorners[] = {0,          1,          2,          3,          5,          31,
                             32,         33,         63,         255,        4096,       16383,
                             16384,      16385,      32767,      65535,      65536,      0x7FFFFFFF,
                             0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF, 0x55555556, 0x3FFFFFFF};

// The memory that the driver has for one buffer.
const size_t kMostBufferBytes = 256 * 1024;

// Frames and timeouts of one stream.
const int kPolls = 8;

// Far more than a stream takes on a busy machine: the rest is a hang.
const std::chrono::seconds kHang(60);

template <typename T, size_t N>
T pick(const T (&table)[N], unsigned index) {
    return table[index % N];
}

} // namespace

MaliciousKernel::MaliciousKernel(const Input& script, const Input& contents)
    : script_(script), contents_(contents), fourcc_(pick(kFourccs, script_.byte())),
      multiplanar_(script_.byte() % 4 == 3) {}

uint8_t MaliciousKernel::byte() {
    std::lock_guard<std::mutex> lock(mutex_);
    return script_.byte();
}

int32_t MaliciousKernel::number() {
    std::lock_guard<std::mutex> lock(mutex_);
    return script_.number();
}

std::string MaliciousKernel::text() {
    std::lock_guard<std::mutex> lock(mutex_);
    std::string result;
    for (int left = script_.byte() % 40; left > 0; --left)
        result += static_cast<char>(script_.byte());
    return result;
}

void MaliciousKernel::beginStream() {
    std::lock_guard<std::mutex> lock(mutex_);
    pollsLeft_ = kPolls;
    idle_ = false;
}

void MaliciousKernel::waitUntilIdle() {
    std::unique_lock<std::mutex> lock(mutex_);
    CHECK(idleChanged_.wait_for(lock, kHang, [this] { return idle_; }));
}

void MaliciousKernel::streamEnded() {
    std::lock_guard<std::mutex> lock(mutex_);
    idle_ = true;
    idleChanged_.notify_all();
}

void MaliciousKernel::checkNothingLeft() {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(descriptors_.empty());
    CHECK(mappings_.empty());
}

// One answer in four is an error while the script lasts.
bool MaliciousKernel::fails() {
    const uint8_t how = script_.byte();
    if (how % 4 != 3)
        return false;
    errno = pick(kErrors, how / 4u);
    return true;
}

// Overwrites a few of the 32-bit fields.
void MaliciousKernel::lie(void* answer, size_t bytes) {
    const size_t fields = bytes / 4;
    for (int left = script_.byte() % 8; left > 0 && fields > 0; --left) {
        const size_t field = script_.byte() % fields;
        const uint8_t kind = script_.byte();
        const uint32_t value = kind < 192 ? pick(kCorners, kind) : static_cast<uint32_t>(script_.number());
        std::memcpy(static_cast<uint8_t*>(answer) + field * 4, &value, sizeof value);
    }
}

// The kernel itself keeps the address of the planes.
void MaliciousKernel::lieAboutBuffer(v4l2_buffer& buffer) {
    v4l2_plane* const planes = buffer.m.planes;
    const bool several = buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    lie(&buffer, sizeof buffer);
    if (!several)
        return;
    buffer.m.planes = planes;
    lie(planes, sizeof *planes);
}

int MaliciousKernel::doOpen(const char*, int) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (fails())
        return -1;
    descriptors_.insert(nextDescriptor_);
    return nextDescriptor_++;
}

int MaliciousKernel::doClose(int descriptor) {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(descriptors_.erase(descriptor) == 1);
    return fails() ? -1 : 0; // it is closed all the same
}

int MaliciousKernel::doIoctl(int descriptor, unsigned long request, void* argument) {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(descriptors_.count(descriptor) == 1);
    if (fails())
        return -1;
    if (const int error = honest(request, argument)) {
        errno = error;
        // A driver may have written before it fails, or claim success where there is nothing to tell.
        if (script_.byte() % 4 != 3)
            return -1;
    }
    if (request == VIDIOC_QUERYBUF || request == VIDIOC_DQBUF || request == VIDIOC_QBUF)
        lieAboutBuffer(*static_cast<v4l2_buffer*>(argument));
    else if (_IOC_DIR(request) & _IOC_READ)
        lie(argument, _IOC_SIZE(request));
    return 0;
}

// The answer of a driver with one format, one size and one rate. 0 or errno.
int MaliciousKernel::honest(unsigned long request, void* argument) {
    switch (request) {
    case VIDIOC_QUERYCAP: {
        auto& caps = *static_cast<v4l2_capability*>(argument);
        // Texts without an end.
        std::memset(caps.driver, 'd', sizeof caps.driver);
        std::memset(caps.card, 0xC3, sizeof caps.card);
        std::memset(caps.bus_info, 'b', sizeof caps.bus_info);
        caps.device_caps =
            (multiplanar_ ? V4L2_CAP_VIDEO_CAPTURE_MPLANE : V4L2_CAP_VIDEO_CAPTURE) | V4L2_CAP_STREAMING;
        caps.capabilities = caps.device_caps | V4L2_CAP_DEVICE_CAPS;
        return 0;
    }
    case VIDIOC_ENUM_FMT: {
        auto& entry = *static_cast<v4l2_fmtdesc*>(argument);
        entry.pixelformat = pick(kFourccs, fourcc_ + entry.index);
        if (entry.index == 0)
            entry.pixelformat = fourcc_;
        return entry.index == 0 ? 0 : EINVAL;
    }
    case VIDIOC_ENUM_FRAMESIZES: {
        auto& entry = *static_cast<v4l2_frmsizeenum*>(argument);
        entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        entry.discrete.width = 64;
        entry.discrete.height = 48;
        return entry.index == 0 ? 0 : EINVAL;
    }
    case VIDIOC_ENUM_FRAMEINTERVALS: {
        auto& entry = *static_cast<v4l2_frmivalenum*>(argument);
        entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
        entry.discrete.numerator = 1;
        entry.discrete.denominator = 30;
        return entry.index == 0 ? 0 : EINVAL;
    }
    case VIDIOC_S_FMT:
        return honestFormat(*static_cast<v4l2_format*>(argument));
    case VIDIOC_G_PARM:
    case VIDIOC_S_PARM: {
        auto& capture = static_cast<v4l2_streamparm*>(argument)->parm.capture;
        capture.capability = V4L2_CAP_TIMEPERFRAME;
        return 0;
    }
    case VIDIOC_REQBUFS:
        queued_.clear();
        return 0;
    case VIDIOC_QUERYBUF:
    case VIDIOC_QBUF:
    case VIDIOC_DQBUF:
        return honestBuffer(request, *static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMOFF:
        queued_.clear();
        return 0;
    case VIDIOC_STREAMON:
        return 0;
    default:
        return ENOTTY;
    }
}

int MaliciousKernel::honestFormat(v4l2_format& format) {
    if (multiplanar_) {
        v4l2_pix_format_mplane& pix = format.fmt.pix_mp;
        width_ = pix.width = std::min(pix.width, 256u);
        height_ = pix.height = std::min(pix.height, 256u);
        pix.num_planes = 1;
    } else {
        v4l2_pix_format& pix = format.fmt.pix;
        width_ = pix.width = std::min(pix.width, 256u);
        height_ = pix.height = std::min(pix.height, 256u);
        pix.sizeimage = width_ * height_ * 4;
    }
    return 0;
}

int MaliciousKernel::honestBuffer(unsigned long request, v4l2_buffer& buffer) {
    const uint32_t bytes = std::max(width_ * height_ * 4, 64u);
    if (request == VIDIOC_QBUF) {
        queued_.push_back(buffer.index);
        return 0;
    }
    if (request == VIDIOC_DQBUF) {
        if (queued_.empty())
            return EAGAIN;
        buffer.index = queued_.front();
        queued_.pop_front();
        buffer.sequence = sequence_++;
    }
    if (buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE) {
        v4l2_plane& plane = *buffer.m.planes;
        plane.length = plane.bytesused = bytes;
        plane.m.mem_offset = buffer.index * 0x10000;
    } else {
        buffer.length = buffer.bytesused = bytes;
        buffer.m.offset = buffer.index * 0x10000;
    }
    return 0;
}

void* MaliciousKernel::doMmap(size_t length, int descriptor, long) {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(descriptors_.count(descriptor) == 1);
    CHECK(length > 0);
    if (fails())
        return MAP_FAILED;
    if (length > kMostBufferBytes) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    auto memory = std::make_unique<FencedBuffer>(length);
    contents_.fill(memory->data(), length);
    void* const address = memory->data();
    mappings_[address] = std::move(memory);
    return address;
}

int MaliciousKernel::doMunmap(void* address, size_t length) {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto mapping = mappings_.find(address);
    CHECK(mapping != mappings_.end());
    CHECK(mapping->second->size() == length);
    mappings_.erase(mapping);
    return 0;
}

// The first descriptor is the camera's, the second a real one that says "stop".
int MaliciousKernel::doPoll(pollfd* descriptors, unsigned long count, int milliseconds) {
    CHECK(count == 2 && milliseconds > 0);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        CHECK(descriptors_.count(descriptors[0].fd) == 1);
        if (pollsLeft_ > 0) {
            --pollsLeft_;
            if (fails())
                return -1;
            const uint8_t how = script_.byte();
            if (how % 8 == 7)
                return 0; // time is up
            descriptors[0].revents = how % 8 == 6 ? static_cast<short>(script_.byte()) : POLLIN;
            return 1;
        }
        idle_ = true;
        idleChanged_.notify_all();
    }
    descriptors[0].revents = 0;
    return ::poll(descriptors + 1, 1, static_cast<int>(std::chrono::milliseconds(kHang).count()));
}

} // namespace fuzz
