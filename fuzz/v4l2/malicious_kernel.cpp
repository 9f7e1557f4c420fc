#include "fuzz/v4l2/malicious_kernel.h"

#include "fuzz/support/check.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace fuzz {

using ostrel::support::ControlScript;
using ostrel::support::DeviceScript;
using ostrel::support::FrameScript;

namespace {

const uint32_t FOURCCS[] = {
    V4L2_PIX_FMT_YUYV,    V4L2_PIX_FMT_MJPEG,   V4L2_PIX_FMT_NV12,    V4L2_PIX_FMT_YUV420,
    V4L2_PIX_FMT_RGB24,   V4L2_PIX_FMT_YUV422P, V4L2_PIX_FMT_GREY,    V4L2_PIX_FMT_NV21,
    V4L2_PIX_FMT_YVU420,  V4L2_PIX_FMT_RGB565,  V4L2_PIX_FMT_XBGR32,  V4L2_PIX_FMT_VYUY,
    V4L2_PIX_FMT_NV16,    V4L2_PIX_FMT_NV24,    V4L2_PIX_FMT_Y10,     V4L2_PIX_FMT_Y12,
    V4L2_PIX_FMT_Y16,     V4L2_PIX_FMT_Y16_BE,  V4L2_PIX_FMT_RGB565X, v4l2_fourcc('P', '0', '1', '0'),
    V4L2_PIX_FMT_NV12M,   V4L2_PIX_FMT_YUV420M, V4L2_PIX_FMT_YVU420M, V4L2_PIX_FMT_NV16M,
    V4L2_PIX_FMT_YUV422M, V4L2_PIX_FMT_YUV444M};

const uint32_t FIELDS[] = {V4L2_FIELD_NONE, V4L2_FIELD_INTERLACED, V4L2_FIELD_SEQ_TB, V4L2_FIELD_SEQ_BT,
                           V4L2_FIELD_ALTERNATE};

const int ERRORS[] = {EINVAL, EIO,    EAGAIN, EBUSY,  ENODEV, ENOMEM, ENOSPC, EPERM,
                      ENXIO,  ENOTTY, EINTR,  EACCES, EPIPE,  EFAULT, ERANGE, ENOENT};

// Numbers at which sizes, counts and offsets go wrong.
const uint32_t CORNERS[] = {0,          1,          2,          3,          5,          31,
                            32,         33,         63,         255,        4096,       16383,
                            16384,      16385,      32767,      65535,      65536,      0x7FFFFFFF,
                            0x80000000, 0x80000001, 0xFFFFFFFE, 0xFFFFFFFF, 0x55555556, 0x3FFFFFFF};

// The memory that the driver has for one buffer.
const size_t MOST_BUFFER_BYTES = 256 * 1024;

// Frames and timeouts of one stream.
const int POLLS = 8;

// Far more than a stream takes on a busy machine: the rest is a hang.
const std::chrono::seconds HANG(60);

// One of each type, one of them held by another.
std::vector<ControlScript> controls() {
    std::vector<ControlScript> result;
    uint32_t id = V4L2_CID_BRIGHTNESS;
    for (const uint32_t type : {V4L2_CTRL_TYPE_INTEGER, V4L2_CTRL_TYPE_BOOLEAN, V4L2_CTRL_TYPE_MENU,
                                V4L2_CTRL_TYPE_BUTTON, V4L2_CTRL_TYPE_INTEGER64, V4L2_CTRL_TYPE_STRING,
                                V4L2_CTRL_TYPE_BITMASK, V4L2_CTRL_TYPE_INTEGER_MENU}) {
        ControlScript control;
        control.id = id++;
        control.type = type;
        control.name = std::string(32, 'n');
        control.maximum = 3;
        control.standard = 0;
        control.items = {{0, "0"}, {2, "2"}};
        result.push_back(control);
    }
    ControlScript automatic = result[1], held = result[0];
    automatic.id = V4L2_CID_AUTOGAIN;
    automatic.standard = 1;
    held.id = V4L2_CID_GAIN;
    held.heldBy = V4L2_CID_AUTOGAIN;
    held.released = {0};
    result.push_back(automatic);
    result.push_back(held);
    return result;
}

template <typename T, size_t N>
T pick(const T (&table)[N], unsigned index) {
    return table[index % N];
}

} // namespace

MaliciousKernel::MaliciousKernel(const Input& script, const Input& contents)
    : script_(script), contents_(contents) {
    DeviceScript device;
    // Texts without an end.
    device.driver = std::string(16, 'd');
    device.card = std::string(32, '\xC3');
    device.busInfo = std::string(32, 'b');
    device.formats = {ostrel::support::raw(pick(FOURCCS, script_.byte()), {ostrel::support::only(64, 48)})};
    const uint8_t kind = script_.byte();
    device.capabilities =
        (kind % 4 >= 2 ? V4L2_CAP_VIDEO_CAPTURE_MPLANE : V4L2_CAP_VIDEO_CAPTURE) | V4L2_CAP_STREAMING;
    device.wholeDevice = device.capabilities;
    device.dataOffset = kind & 4 ? 24 : 0;
    if (kind & 8)
        device.incoming = ostrel::support::only(64, 48).most;
    device.controls = controls();
    const uint32_t field = pick(FIELDS, kind / 16u);
    device.adjust = [field](v4l2_pix_format& pix) {
        pix.field = field;
        pix.width = std::min(pix.width, 256u);
        pix.height = std::min(pix.height, 256u);
        pix.bytesperline = 0;
        pix.sizeimage = std::max(pix.width * pix.height * 4, 64u);
    };
    plug("/dev/video0", device);
    plug("/dev/video1", device);
}

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
    pollsLeft_ = POLLS;
    idle_ = false;
}

void MaliciousKernel::waitUntilIdle() {
    std::unique_lock<std::mutex> lock(mutex_);
    CHECK(idleChanged_.wait_for(lock, HANG, [this] { return idle_; }));
}

void MaliciousKernel::streamEnded() {
    std::lock_guard<std::mutex> lock(mutex_);
    idle_ = true;
    idleChanged_.notify_all();
}

void MaliciousKernel::checkNothingLeft() {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(openDescriptors() == 0);
    CHECK(mappings_.empty());
}

// One answer in four is an error while the script lasts.
bool MaliciousKernel::fails() {
    const uint8_t how = script_.byte();
    if (how % 4 != 3)
        return false;
    errno = pick(ERRORS, how / 4u);
    return true;
}

// Overwrites a few of the 32-bit fields.
void MaliciousKernel::lie(void* answer, size_t bytes) {
    const size_t fields = bytes / 4;
    for (int left = script_.byte() % 8; left > 0 && fields > 0; --left) {
        const size_t field = script_.byte() % fields;
        const uint8_t kind = script_.byte();
        const uint32_t value = kind < 192 ? pick(CORNERS, kind) : static_cast<uint32_t>(script_.number());
        std::memcpy(static_cast<uint8_t*>(answer) + field * 4, &value, sizeof value);
    }
}

// The kernel itself keeps the address of the planes.
void MaliciousKernel::lieAboutBuffer(v4l2_buffer& buffer) {
    v4l2_plane* const planes = buffer.m.planes;
    const bool several = buffer.type == V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    const uint32_t asked = buffer.length; // so many planes there is room for
    lie(&buffer, sizeof buffer);
    if (!several)
        return;
    buffer.m.planes = planes;
    const uint32_t count = std::min<uint32_t>(asked, 3);
    lie(planes, count * sizeof *planes);
}

// The kernel itself keeps all addresses; a driver may leave a text without its end.
void MaliciousKernel::lieAboutControls(v4l2_ext_controls& all) {
    v4l2_ext_control* const controls = all.controls;
    const uint32_t count = all.count;
    lie(&all, sizeof all);
    all.controls = controls;
    for (uint32_t i = 0; i < count; ++i) {
        if (script_.byte() % 4 != 3)
            continue;
        if (controls[i].size > 0)
            std::memset(controls[i].string, 'x', controls[i].size);
        else
            lie(&controls[i].value64, sizeof controls[i].value64);
    }
}

int MaliciousKernel::doOpen(const char* path, int flags) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (fails())
        return -1;
    const int descriptor = ScriptedKernel::doOpen(path, flags);
    paths_[descriptor] = path;
    return descriptor;
}

int MaliciousKernel::doClose(int descriptor) {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(ScriptedKernel::doClose(descriptor) == 0);
    return fails() ? -1 : 0; // it is closed all the same
}

int MaliciousKernel::doIoctl(int descriptor, unsigned long request, void* argument) {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(isOpen(descriptor));
    if (fails())
        return -1;
    if (ScriptedKernel::doIoctl(descriptor, request, argument) == -1) {
        const int error = errno;
        // A driver may have written before it fails, or claim success where there is nothing to tell.
        if (script_.byte() % 4 != 3) {
            errno = error;
            return -1;
        }
    }
    if (request == VIDIOC_QUERYBUF || request == VIDIOC_DQBUF || request == VIDIOC_QBUF)
        lieAboutBuffer(*static_cast<v4l2_buffer*>(argument));
    else if (request == VIDIOC_G_EXT_CTRLS || request == VIDIOC_S_EXT_CTRLS ||
             request == VIDIOC_TRY_EXT_CTRLS)
        lieAboutControls(*static_cast<v4l2_ext_controls*>(argument));
    else if (_IOC_DIR(request) & _IOC_READ)
        lie(argument, _IOC_SIZE(request));
    return 0;
}

void* MaliciousKernel::doMmap(size_t length, int descriptor, long) {
    std::lock_guard<std::mutex> lock(mutex_);
    CHECK(isOpen(descriptor));
    CHECK(length > 0);
    if (fails())
        return MAP_FAILED;
    if (length > MOST_BUFFER_BYTES) {
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

// All that the client has queued.
void MaliciousKernel::fillBuffers(int descriptor) {
    const std::string& path = paths_[descriptor];
    FrameScript frame;
    frame.bytesUsed = static_cast<int>(std::min(format(path).sizeimage * 4, 1u << 24)); // in all planes
    while (feed(path, frame)) {
    }
}

// The first descriptor is the camera's, the second a real one that says "stop".
int MaliciousKernel::doPoll(pollfd* descriptors, unsigned long count, int milliseconds) {
    CHECK(count == 2 && milliseconds > 0);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        CHECK(isOpen(descriptors[0].fd));
        if (pollsLeft_ > 0) {
            --pollsLeft_;
            if (fails())
                return -1;
            const uint8_t how = script_.byte();
            if (how % 8 == 7)
                return 0; // time is up
            fillBuffers(descriptors[0].fd);
            descriptors[0].revents = POLLIN;
            if (how % 8 == 5) {
                changeSource(paths_[descriptors[0].fd], ostrel::support::only(8 + how / 2, 6 + how).most);
                descriptors[0].revents = POLLIN | POLLPRI;
                // A start that fails is tried again after seconds: the client may stop from here on.
                idle_ = true;
                idleChanged_.notify_all();
            } else if (how % 8 == 6) {
                descriptors[0].revents = static_cast<short>(script_.byte());
            }
            return 1;
        }
        idle_ = true;
        idleChanged_.notify_all();
    }
    descriptors[0].revents = 0;
    return ::poll(descriptors + 1, 1, static_cast<int>(std::chrono::milliseconds(HANG).count()));
}

} // namespace fuzz
