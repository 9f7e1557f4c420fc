// The scripted driver's buffers and the stream of frames through them.
#include "support/v4l2/driver.h"

#include <algorithm>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace ostrel::support {

namespace {

// 16 KiB on some machines; a mapping begins with one.
size_t wholePages(size_t bytes) {
    const auto page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    return std::max((bytes + page - 1) / page * page, page);
}

unsigned takeFirst(std::vector<unsigned>& indices) {
    const unsigned first = indices.front();
    indices.erase(indices.begin());
    return first;
}

timeval timeOf(int64_t nanoseconds) {
    timeval time = {};
    time.tv_sec = static_cast<time_t>(nanoseconds / 1000000000);
    time.tv_usec = static_cast<suseconds_t>(nanoseconds % 1000000000 / 1000);
    return time;
}

} // namespace

// ENOTTY: none of these.
int Driver::command(int descriptor, unsigned long request, void* argument) {
    const auto ofBuffer = [&](int (Driver::*answer)(v4l2_buffer&)) {
        auto& buffer = *static_cast<v4l2_buffer*>(argument);
        if (buffer.type != format_.type)
            return EINVAL;
        return owner_ >= 0 && owner_ != descriptor ? EBUSY : (this->*answer)(buffer);
    };
    switch (static_cast<uint32_t>(request)) {
    case VIDIOC_REQBUFS:
        return requestBuffers(descriptor, *static_cast<v4l2_requestbuffers*>(argument));
    case VIDIOC_QUERYBUF: {
        auto& buffer = *static_cast<v4l2_buffer*>(argument);
        return buffer.type == format_.type ? queryBuffer(buffer) : EINVAL;
    }
    case VIDIOC_QBUF:
        return ofBuffer(&Driver::queue);
    case VIDIOC_DQBUF:
        return ofBuffer(&Driver::dequeue);
    case VIDIOC_STREAMON:
    case VIDIOC_STREAMOFF:
        if (*static_cast<uint32_t*>(argument) != format_.type)
            return EINVAL;
        if (owner_ >= 0 && owner_ != descriptor)
            return EBUSY;
        return switchStream(request == VIDIOC_STREAMON);
    default:
        return ENOTTY;
    }
}

int Driver::requestBuffers(int descriptor, v4l2_requestbuffers& request) {
    if (request.type != format_.type || request.memory != V4L2_MEMORY_MMAP)
        return EINVAL;
    if ((owner_ >= 0 && owner_ != descriptor) || streaming_)
        return EBUSY;
    const bool mapped =
        std::any_of(buffers_.begin(), buffers_.end(), [](const Buffer& b) { return b.mappings > 0; });
    if (mapped)
        journal_.misuse.push_back("buffers freed while mapped");
    release();
    request.count = std::min(request.count, device_.mostBuffers);
    request.capabilities = V4L2_BUF_CAP_SUPPORTS_MMAP;
    journal_.calls.push_back("REQBUFS " + std::to_string(request.count));
    if (request.count == 0)
        return 0;
    owner_ = descriptor;
    const int error = reserve(request.count);
    if (error)
        release();
    return error;
}

void Driver::release() {
    if (mapped_)
        ::munmap(mapped_, bufferBytes_ * buffers_.size());
    if (memory_ >= 0)
        ::close(memory_);
    mapped_ = nullptr;
    memory_ = -1;
    owner_ = -1;
    buffers_.clear();
    waiting_.clear();
    done_.clear();
}

// The memory is the kernel's, which the client's mappings share: there before anything is touched, gone for
// the client once it has unmapped it.
int Driver::reserve(unsigned count) {
    bufferBytes_ = 0;
    for (const uint32_t bytes : format_.planeBytes)
        bufferBytes_ += wholePages(bytes);
    const size_t all = bufferBytes_ * count;
    memory_ = ::memfd_create("frames", MFD_CLOEXEC);
    if (memory_ < 0 || ::ftruncate(memory_, static_cast<off_t>(all)) != 0)
        return ENOMEM;
    const int populate = device_.period ? MAP_POPULATE : 0;
    void* const address = ::mmap(nullptr, all, PROT_READ | PROT_WRITE, MAP_SHARED | populate, memory_, 0);
    if (address == MAP_FAILED)
        return ENOMEM;
    mapped_ = static_cast<uint8_t*>(address);
    buffers_.resize(count);
    for (unsigned index = 0; device_.picture && index < count; ++index)
        write(index, *device_.picture);
    return 0;
}

uint8_t* Driver::memoryOf(unsigned buffer, size_t plane) const {
    size_t offset = buffer * bufferBytes_;
    for (size_t before = 0; before < plane; ++before)
        offset += wholePages(format_.planeBytes[before]);
    return mapped_ + offset;
}

size_t Driver::roomOf(size_t plane) const {
    const uint32_t offset = format_.type == V4L2_BUF_TYPE_VIDEO_CAPTURE ? 0 : device_.dataOffset;
    return format_.planeBytes[plane] - offset;
}

// Plane after plane, as much as there is room for.
void Driver::write(unsigned buffer, const std::vector<uint8_t>& bytes) {
    size_t at = 0;
    for (size_t plane = 0; plane < format_.planeBytes.size() && at < bytes.size(); ++plane) {
        const size_t room = roomOf(plane), count = std::min(bytes.size() - at, room);
        std::memcpy(memoryOf(buffer, plane) + (format_.planeBytes[plane] - room), bytes.data() + at, count);
        at += count;
    }
}

void* Driver::map(size_t length, long offset) {
    const auto index = bufferBytes_ ? static_cast<size_t>(offset) / bufferBytes_ : 0;
    if (index >= buffers_.size() || length > bufferBytes_)
        return nullptr;
    // Already there, as a driver's pages are: touching them is no page fault.
    void* const address = ::mmap(nullptr, length, PROT_READ | PROT_WRITE,
                                 MAP_SHARED | (device_.period ? MAP_POPULATE : 0), memory_, offset);
    if (address == MAP_FAILED)
        return nullptr;
    ++buffers_[index].mappings;
    return address;
}

void Driver::unmapped(long offset) {
    if (streaming_ && !excused_)
        journal_.misuse.push_back("unmapped while streaming");
    const auto index = bufferBytes_ ? static_cast<size_t>(offset) / bufferBytes_ : 0;
    if (index < buffers_.size())
        --buffers_[index].mappings;
}

int Driver::queryBuffer(v4l2_buffer& buffer) const {
    const size_t planes = format_.planeBytes.size();
    const bool several = buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    if (buffer.index >= buffers_.size() || (several && buffer.length < planes))
        return EINVAL;
    for (size_t plane = 0; plane < planes; ++plane) {
        const auto offset = static_cast<uint32_t>(memoryOf(buffer.index, plane) - mapped_);
        (several ? buffer.m.planes[plane].length : buffer.length) = format_.planeBytes[plane];
        (several ? buffer.m.planes[plane].m.mem_offset : buffer.m.offset) = offset;
    }
    if (several)
        buffer.length = static_cast<uint32_t>(planes);
    buffer.flags = device_.timestamps | (buffers_[buffer.index].queued ? V4L2_BUF_FLAG_QUEUED : 0u);
    return 0;
}

int Driver::queue(v4l2_buffer& buffer) {
    if (buffer.memory != V4L2_MEMORY_MMAP || buffer.index >= buffers_.size() ||
        buffers_[buffer.index].queued) {
        journal_.misuse.push_back("queued a buffer that is not the client's");
        return EINVAL;
    }
    advance();
    buffers_[buffer.index].queued = true;
    waiting_.push_back(buffer.index);
    return 0;
}

int Driver::dequeue(v4l2_buffer& buffer) {
    if (!streaming_)
        return EINVAL;
    advance();
    if (done_.empty()) {
        rearm(); // the timer has run out for a frame that nobody will get
        return EAGAIN;
    }
    const unsigned index = takeFirst(done_);
    Buffer& full = buffers_[index];
    full.queued = false;
    buffer.index = index;
    queryBuffer(buffer);
    describe(full, buffer);
    if (device_.stamp)
        device_.stamp(memoryOf(index, 0), full.sequence);
    rearm();
    return 0;
}

void Driver::describe(const Buffer& full, v4l2_buffer& buffer) const {
    if (full.claimedIndex >= 0)
        buffer.index = static_cast<uint32_t>(full.claimedIndex);
    buffer.flags = full.flags;
    buffer.sequence = full.sequence;
    buffer.timestamp = full.time;
    buffer.field = full.field;
    if (buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE) {
        buffer.bytesused = full.bytesUsed;
        return;
    }
    // All planes but the last are full when there is more.
    size_t left = full.bytesUsed;
    const size_t planes = std::min<size_t>(buffer.length, format_.planeBytes.size());
    for (size_t plane = 0; plane < planes; ++plane) {
        const size_t used = plane + 1 == planes ? left : std::min(left, roomOf(plane));
        buffer.m.planes[plane].bytesused = static_cast<uint32_t>(used) + device_.dataOffset;
        buffer.m.planes[plane].data_offset = device_.dataOffset;
        left -= used;
    }
}

int Driver::switchStream(bool on) {
    journal_.calls.push_back(on ? "STREAMON" : "STREAMOFF");
    if (on && device_.bandwidth && !device_.bandwidth(format_.pix))
        return ENOSPC;
    streaming_ = on;
    stalled_ = false;
    sequence_ = 0;
    if (on) {
        started_ = monotonicNow();
    } else {
        for (Buffer& buffer : buffers_)
            buffer.queued = false;
        waiting_.clear();
        done_.clear();
    }
    rearm();
    return 0;
}

bool Driver::feed(const FrameScript& frame) {
    if (stalled_ || !isLocked())
        return false;
    const uint32_t sequence = frame.sequence < 0 ? sequence_ : static_cast<uint32_t>(frame.sequence);
    sequence_ = sequence + 1;
    if (!streaming_ || waiting_.empty()) {
        ++lost_;
        return false;
    }
    const unsigned index = takeFirst(waiting_);
    write(index, frame.bytes);
    Buffer& buffer = buffers_[index];
    buffer.flags = frame.flags | device_.timestamps;
    buffer.sequence = sequence;
    buffer.bytesUsed =
        static_cast<uint32_t>(frame.bytesUsed < 0 ? static_cast<int>(frame.bytes.size()) : frame.bytesUsed);
    buffer.claimedIndex = frame.index;
    buffer.field = frame.field;
    buffer.time = frame.time;
    if (frame.time.tv_sec == 0 && device_.timestamps == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC)
        buffer.time = timeOf(monotonicNow());
    done_.push_back(index);
    idle = false;
    rearm();
    return true;
}

// Fills buffers with the frames that have come by themselves meanwhile.
void Driver::advance() {
    if (!streaming_ || stalled_ || !isLocked() || !device_.period)
        return;
    const int64_t now = monotonicNow();
    for (; arrival(sequence_) <= now; ++sequence_) {
        if (waiting_.empty()) {
            ++lost_;
            continue;
        }
        const unsigned index = takeFirst(waiting_);
        Buffer& buffer = buffers_[index];
        buffer.flags = device_.timestamps;
        buffer.sequence = sequence_;
        buffer.bytesUsed = static_cast<uint32_t>(device_.picture ? device_.picture->size() : 0);
        buffer.time = timeOf(arrival(sequence_));
        buffer.field = V4L2_FIELD_NONE;
        done_.push_back(index);
        idle = false;
    }
}

} // namespace ostrel::support
