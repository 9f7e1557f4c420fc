#include "platform/cameras/v4l2/video_node.h"

#include "base/limits.h"
#include "platform/cameras/pixels/pixel_format.h"
#include "platform/cameras/v4l2/colour_encoding.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <mutex>
#include <set>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// Larger pictures are taken for a driver's mistake.

const uint32_t CAPTURE = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE;

// The paths that are open in this process, each as often as it is open. Never destroyed: the last camera may
// be closed after every static destructor.
class OpenPaths {
public:
    void add(const std::string& path) {
        const std::lock_guard<std::mutex> lock(mutex_);
        paths_.insert(path);
    }
    void remove(const std::string& path) {
        const std::lock_guard<std::mutex> lock(mutex_);
        paths_.erase(paths_.find(path));
    }
    bool has(const std::string& path) {
        const std::lock_guard<std::mutex> lock(mutex_);
        return paths_.count(path) != 0;
    }

private:
    std::mutex mutex_;
    std::multiset<std::string> paths_;
};

OpenPaths& openPaths() {
    static OpenPaths* const instance = new OpenPaths;
    return *instance;
}

// Drivers of image processors whose nodes look like cameras.
bool isImageProcessor(const std::string& driver) {
    return driver == "bcm2835-isp" || driver == "pispbe" || driver == "ipu3-imgu";
}

NodeKind kindOf(uint32_t flags, const std::string& driver) {
    const bool capture = flags & CAPTURE;
    // Unless it is loaded with exclusive_caps it says that it does everything, fed or not.
    if (driver == "v4l2 loopback")
        return capture ? NodeKind::Camera : NodeKind::UnfedLoopback;
    if (flags & (V4L2_CAP_VIDEO_M2M | V4L2_CAP_VIDEO_M2M_MPLANE))
        return NodeKind::Codec;
    if (flags & (V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_VIDEO_OUTPUT_MPLANE))
        return NodeKind::Output;
    if (flags & (V4L2_CAP_META_CAPTURE | V4L2_CAP_META_OUTPUT))
        return NodeKind::Metadata;
    if (flags & V4L2_CAP_TOUCH)
        return NodeKind::TouchPad;
    if (!capture)
        return NodeKind::Other;
    if (isImageProcessor(driver))
        return NodeKind::ImageProcessor;
    return flags & V4L2_CAP_IO_MC ? NodeKind::MediaController : NodeKind::Camera;
}

// The kernel's texts end with a zero, but not every driver's do.
template <size_t N>
std::string text(const __u8 (&bytes)[N]) {
    const char* chars = reinterpret_cast<const char*>(bytes);
    return std::string(chars, ::strnlen(chars, N));
}

Interval interval(const v4l2_fract& fraction) {
    Interval i;
    i.numerator = fraction.numerator;
    i.denominator = fraction.denominator;
    return i;
}

v4l2_format requestOf(const Candidate& asked, bool multiplanar) {
    v4l2_format format = {};
    format.type = bufferType(multiplanar);
    if (multiplanar) {
        v4l2_pix_format_mplane& pix = format.fmt.pix_mp;
        pix.pixelformat = asked.fourcc;
        pix.width = static_cast<uint32_t>(asked.size.width);
        pix.height = static_cast<uint32_t>(asked.size.height);
        pix.field = V4L2_FIELD_NONE;
        pixels::PixelFormat known;
        if (pixels::formatOf(asked.fourcc, known))
            pix.num_planes = static_cast<uint8_t>(known.memoryPlanes);
    } else {
        v4l2_pix_format& pix = format.fmt.pix;
        pix.pixelformat = asked.fourcc;
        pix.width = static_cast<uint32_t>(asked.size.width);
        pix.height = static_cast<uint32_t>(asked.size.height);
        pix.field = V4L2_FIELD_NONE;
        pix.priv = V4L2_PIX_FMT_PRIV_MAGIC; // else the colour fields that follow it are not filled
    }
    return format;
}

// Everything else is a whole picture in one piece, or half pictures one by one.
pixels::Fields fieldsOf(uint32_t field) {
    switch (field) {
    case V4L2_FIELD_SEQ_TB:
        return pixels::Fields::TopFirst;
    case V4L2_FIELD_SEQ_BT:
        return pixels::Fields::BottomFirst;
    default:
        return pixels::Fields::Woven;
    }
}

// A format without a picture is what was asked for, or a mistake.
bool readFormat(uint32_t fourcc, uint32_t width, uint32_t height, uint32_t field, uint32_t asked,
                Granted& granted) {
    pixels::PixelFormat format;
    format.layout = pixels::Layout::Opaque;
    if (width == 0 || height == 0 || width > static_cast<uint32_t>(LARGEST_SIDE) ||
        height > static_cast<uint32_t>(LARGEST_SIDE) ||
        (!pixels::formatOf(fourcc, format) && fourcc != asked))
        return false;
    granted.fourcc = fourcc;
    granted.layout = format.layout;
    granted.memoryPlanes = static_cast<unsigned>(format.memoryPlanes);
    granted.fields = fieldsOf(field);
    granted.size = Size(sideOf(width), sideOf(height));
    return true;
}

bool readGranted(const v4l2_pix_format& pix, uint32_t asked, Granted& granted) {
    if (!readFormat(pix.pixelformat, pix.width, pix.height, pix.field, asked, granted) ||
        granted.memoryPlanes != 1)
        return false;
    granted.multiplanar = false;
    const int least = pixels::minimumStride(granted.layout, granted.size.width);
    granted.strides[0] = pixels::saneStride(pix.bytesperline, static_cast<size_t>(least));
    const bool extended = pix.priv == V4L2_PIX_FMT_PRIV_MAGIC;
    granted.matrix = matrixOf(pix.colorspace, extended ? pix.ycbcr_enc : 0, extended ? pix.quantization : 0);
    return true;
}

bool readGranted(const v4l2_pix_format_mplane& pix, uint32_t asked, Granted& granted) {
    if (!readFormat(pix.pixelformat, pix.width, pix.height, pix.field, asked, granted) ||
        granted.memoryPlanes != pix.num_planes)
        return false;
    granted.multiplanar = true;
    const int least = pixels::minimumStride(granted.layout, granted.size.width);
    granted.strides[0] = pixels::saneStride(pix.plane_fmt[0].bytesperline, static_cast<size_t>(least));
    for (unsigned plane = 1; plane < granted.memoryPlanes; ++plane) {
        const pixels::PlaneShape rows = pixels::planeShape(granted.layout, static_cast<int>(plane),
                                                           granted.size.width, granted.size.height);
        granted.strides[plane] = pixels::saneStride(pix.plane_fmt[plane].bytesperline, rows.rowBytes);
    }
    granted.matrix = matrixOf(pix.colorspace, pix.ycbcr_enc, pix.quantization);
    return true;
}

// False when it is neither a picture that can be converted nor the format that was asked for.
bool readGranted(const v4l2_format& format, bool multiplanar, uint32_t asked, Granted& granted) {
    return multiplanar ? readGranted(format.fmt.pix_mp, asked, granted)
                       : readGranted(format.fmt.pix, asked, granted);
}

} // namespace

int sideOf(uint32_t pixels) {
    return static_cast<int>(std::min(pixels, static_cast<uint32_t>(LARGEST_SIDE)));
}

uint32_t bufferType(bool multiplanar) {
    return multiplanar ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE;
}

VideoNode::VideoNode(const std::shared_ptr<KernelCalls>& kernel, const std::string& path)
    : kernel_(kernel), path_(path), descriptor_(-1) {}

std::shared_ptr<VideoNode> VideoNode::open(const std::shared_ptr<KernelCalls>& kernel,
                                           const std::string& path) {
    std::shared_ptr<VideoNode> node(new VideoNode(kernel, path));
    openPaths().add(path);
    const int descriptor = kernel->open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        const int error = errno;
        openPaths().remove(path);
        node.reset();
        errno = error;
        return nullptr;
    }
    node->descriptor_ = descriptor;
    return node;
}

void VideoNode::close() {
    const int descriptor = descriptor_.exchange(-1);
    if (descriptor < 0)
        return;
    kernel_->close(descriptor);
    openPaths().remove(path_);
}

bool VideoNode::isOpenHere(const std::string& path) {
    return openPaths().has(path);
}

int VideoNode::ioctl(unsigned long request, void* argument) const {
    return kernel_->ioctl(descriptor(), request, argument) == -1 ? errno : 0;
}

int VideoNode::query(Capabilities& capabilities) const {
    v4l2_capability caps = {};
    if (const int error = ioctl(VIDIOC_QUERYCAP, &caps))
        return error;
    // `caps.capabilities` speaks of the whole device, of which this node may be the part that only has
    // metadata.
    const uint32_t flags = caps.capabilities & V4L2_CAP_DEVICE_CAPS ? caps.device_caps : caps.capabilities;
    capabilities.card = text(caps.card);
    capabilities.driver = text(caps.driver);
    capabilities.busInfo = text(caps.bus_info);
    capabilities.kind = kindOf(flags, capabilities.driver);
    capabilities.capture = capabilities.kind == NodeKind::Camera;
    capabilities.multiplanar = (flags & CAPTURE) == V4L2_CAP_VIDEO_CAPTURE_MPLANE;
    capabilities.streaming = flags & V4L2_CAP_STREAMING;
    return 0;
}

bool VideoNode::isGone() const {
    Capabilities capabilities;
    const int error = query(capabilities);
    return error == ENODEV || error == ENXIO;
}

int VideoNode::setFormat(const Candidate& asked, bool multiplanar, Granted& granted) const {
    v4l2_format format = requestOf(asked, multiplanar);
    if (const int error = ioctl(VIDIOC_S_FMT, &format))
        return error;
    if (!readGranted(format, multiplanar, asked.fourcc, granted))
        return EINVAL;
    fillWholeBuffer(granted.size);
    return 0;
}

bool VideoNode::wouldGrant(const Candidate& asked, bool multiplanar) const {
    v4l2_format format = requestOf(asked, multiplanar);
    Granted granted;
    const int error = ioctl(VIDIOC_TRY_FMT, &format);
    if (error == ENOTTY)
        return true; // the driver cannot be asked: trying is the only way to find out
    return error == 0 && readGranted(format, multiplanar, asked.fourcc, granted) &&
           granted.size == asked.size;
}

int64_t VideoNode::exposureNanoseconds() const {
    v4l2_control control = {};
    control.id = V4L2_CID_EXPOSURE_ABSOLUTE;
    const int64_t unit = 100000; // the control counts in 100 microseconds
    return ioctl(VIDIOC_G_CTRL, &control) == 0 && control.value > 0 ? control.value * unit : 0;
}

// Drivers that can place the picture in a part of the buffer keep that part when the format grows: after a
// smaller capture, of this program or another, the rest of the buffer would stay black.
void VideoNode::fillWholeBuffer(const Size& size) const {
    v4l2_selection place = {};
    place.type = V4L2_BUF_TYPE_VIDEO_CAPTURE; // for both interfaces
    place.target = V4L2_SEL_TGT_COMPOSE;
    if (ioctl(VIDIOC_G_SELECTION, &place) != 0)
        return; // most cameras cannot do it
    v4l2_rect whole = {};
    whole.width = static_cast<uint32_t>(size.width);
    whole.height = static_cast<uint32_t>(size.height);
    if (std::memcmp(&place.r, &whole, sizeof whole) == 0)
        return;
    place.r = whole;
    ioctl(VIDIOC_S_SELECTION, &place); // refused, it stays as it is
}

void VideoNode::setInterval(const Interval& asked, Granted& granted) const {
    granted.interval = asked;
    v4l2_streamparm parameters = {};
    parameters.type = bufferType(granted.multiplanar);
    if (ioctl(VIDIOC_G_PARM, &parameters) != 0)
        return;
    v4l2_captureparm& capture = parameters.parm.capture;
    if (asked.known() && (capture.capability & V4L2_CAP_TIMEPERFRAME)) {
        capture.timeperframe.numerator = asked.numerator;
        capture.timeperframe.denominator = asked.denominator;
        v4l2_streamparm set = parameters;
        if (ioctl(VIDIOC_S_PARM, &set) == 0)
            parameters = set; // else whatever rate it has
    }
    const Interval now = v4l2::interval(parameters.parm.capture.timeperframe);
    if (now.known())
        granted.interval = now;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
