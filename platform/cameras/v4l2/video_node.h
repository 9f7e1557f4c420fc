// An open device node, asked in questions instead of kernel structures.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_VIDEO_NODE_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_VIDEO_NODE_H

#include "platform/cameras/format_choice.h"
#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/v4l2/kernel_calls.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// What a node is for.
enum class NodeKind {
    Camera,          // pictures, and nothing else
    MediaController, // a part of a camera: it gives pictures only when another program has set the parts up
    ImageProcessor,  // turns pictures in memory into others, though it looks like a camera
    Codec,           // the same, and says so
    UnfedLoopback,   // a loopback device to which nobody gives pictures
    Output,
    Metadata,
    TouchPad,
    Other
};

struct Capabilities {
    NodeKind kind = NodeKind::Other;
    bool capture = false;     // it is a camera
    bool multiplanar = false; // speaks only the interface for several planes
    bool streaming = false;
    std::string card, driver, busInfo; // bytes as the driver gives them
};

// What the driver granted, which may be anything else than what was asked.
struct Granted {
    pixels::Layout layout = pixels::Layout::Bgrx;
    pixels::YuvMatrix matrix = pixels::YuvMatrix::Bt601;
    pixels::Fields fields = pixels::Fields::Woven;
    uint32_t fourcc = 0;
    Size size; // of one picture; of one field where the driver sends half pictures
    // Blocks of memory in each buffer, and how long the rows in each are: never less than a row needs.
    unsigned memoryPlanes = 1;
    std::array<int, 3> strides = {};
    bool multiplanar = false;
    Interval interval;
};

// Of what a driver says: larger ones are taken for its mistake.
int sideOf(uint32_t pixels);
// V4L2_BUF_TYPE_...
uint32_t bufferType(bool multiplanar);

// Owns the descriptor. Thread-safe as far as the kernel is, that is, every single call.
class VideoNode {
public:
    // Null with errno set when it does not open. Until it is closed, and from before it is opened, the node
    // counts as open here.
    static std::shared_ptr<VideoNode> open(const std::shared_ptr<KernelCalls>& kernel,
                                           const std::string& path);
    ~VideoNode() { close(); }
    VideoNode(const VideoNode&) = delete;
    VideoNode& operator=(const VideoNode&) = delete;

    // Whether this process has the node open or is opening it: many drivers let the calls on a node wait for
    // each other, so that whoever only asks must make none.
    static bool isOpenHere(const std::string& path);

    // For who knows that nobody uses it any more, though others still hold the object.
    void close();

    // 0 or errno.
    int query(Capabilities& capabilities) const;
    // The device has left the machine.
    bool isGone() const;

    // Whether setFormat() would give this size, as far as the driver says without doing it.
    bool wouldGrant(const Candidate& asked, bool multiplanar) const;
    // 0, or errno; EINVAL also when what is granted cannot be converted, unless it is the asked format.
    int setFormat(const Candidate& asked, bool multiplanar, Granted& granted) const;
    // Asks for the interval and reads back the granted one. A driver may know no rates at all.
    void setInterval(const Interval& asked, Granted& granted) const;

    // What the camera says of its exposure at present; 0 where it does not.
    int64_t exposureNanoseconds() const;

    int descriptor() const { return descriptor_.load(std::memory_order_relaxed); }
    KernelCalls& kernel() const { return *kernel_; }
    int ioctl(unsigned long request, void* argument) const; // 0 or errno

private:
    VideoNode(const std::shared_ptr<KernelCalls>& kernel, const std::string& path);

    void fillWholeBuffer(const Size& size) const;

    const std::shared_ptr<KernelCalls> kernel_;
    const std::string path_;
    std::atomic<int> descriptor_; // -1 once closed
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
