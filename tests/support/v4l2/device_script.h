// What a scripted V4L2 device is and does by itself.
#ifndef OSTREL_TESTS_SUPPORT_V4L2_DEVICE_SCRIPT_H
#define OSTREL_TESTS_SUPPORT_V4L2_DEVICE_SCRIPT_H

#include "platform/cameras/format_choice.h"

#include <cerrno>
#include <cstdint>
#include <functional>
#include <linux/videodev2.h>
#include <map>
#include <memory>
#include <string>
#include <sys/time.h>
#include <vector>

namespace ostrel::support {

struct FormatScript {
    uint32_t fourcc = 0;
    std::vector<cameras::SizeRange> sizes; // none: the driver does not list them
    // The same for all sizes; none: not listed. Of a range: the shortest, the longest and the step.
    std::vector<cameras::Interval> intervals;
    // Where not all sizes have the same.
    std::function<std::vector<cameras::Interval>(const cameras::Size&)> intervalsOf;
    uint32_t intervalType = V4L2_FRMIVAL_TYPE_DISCRETE;
};

struct ControlScript {
    uint32_t id = 0;
    uint32_t type = V4L2_CTRL_TYPE_INTEGER;
    std::string name;
    int64_t minimum = 0, maximum = 255, step = 1, standard = 128; // what it has at first, too
    std::map<uint32_t, std::string> items;                        // those that a menu has
    uint32_t flags = 0;
    // Inactive while another control has another value than these.
    uint32_t heldBy = 0;
    std::vector<int64_t> released = {};
};

// Which of the kernel's calls for controls a driver has.
enum class ControlCalls {
    All,
    WithoutExtended,   // a number for each call, and asking for the next one
    WithoutNext,       // nor that
    ExtendedOneByOne,  // G_, S_ and TRY_EXT_CTRLS take one alone
    ListedNotReadable, // none but those that list
};

// Sizes and rates as drivers list them. A step of 1 is a continuous range.
inline cameras::SizeRange only(int width, int height) {
    cameras::SizeRange range;
    range.least.width = range.most.width = width;
    range.least.height = range.most.height = height;
    return range;
}
inline cameras::SizeRange stepwise(int least, int most, int step) {
    cameras::SizeRange range;
    range.least.width = range.least.height = least;
    range.most.width = range.most.height = most;
    range.step.width = range.step.height = step;
    return range;
}
inline cameras::Interval perSecond(uint32_t frames) {
    cameras::Interval interval;
    interval.numerator = 1;
    interval.denominator = frames;
    return interval;
}
inline FormatScript raw(uint32_t fourcc, std::vector<cameras::SizeRange> sizes, uint32_t rate = 30) {
    FormatScript format;
    format.fourcc = fourcc;
    format.sizes = std::move(sizes);
    format.intervals.push_back(perSecond(rate));
    return format;
}

// Given to ScriptedKernel::plug(), which keeps a copy.
struct DeviceScript {
    std::string card = "Scripted Camera";
    std::string driver = "scripted";
    std::string busInfo = "usb-0000:00:14.0-1";
    uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    bool hasDeviceCaps = true;
    uint32_t wholeDevice = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<FormatScript> formats; // at first it has the first format in its first size
    bool knowsRates = true;

    std::function<void(v4l2_pix_format&)> adjust; // what S_FMT and TRY_FMT grant instead
    std::function<cameras::Interval(const cameras::Interval&)> grantInterval; // the same of S_PARM
    std::function<bool(const v4l2_pix_format&)> bandwidth; // false: STREAMON answers ENOSPC
    uint32_t padding = 0;                                  // bytes at the end of each row
    uint32_t dataOffset = 0; // bytes before the picture, in each plane of the multiplanar interface
    unsigned mostBuffers = 32;
    uint32_t timestamps = 0;       // V4L2_BUF_FLAG_TIMESTAMP_..., on every buffer
    int unpluggedDequeue = ENODEV; // what DQBUF says once the device is gone

    // A receiver: what comes in at first. It has the size of what came in when the timings were last set,
    // lists no sizes, and makes no frames while something else comes in. 0 x 0: it is a camera.
    cameras::Size incoming;

    // Frames that come by themselves: one each so many nanoseconds from STREAMON on. 0: they are fed.
    int64_t period = 0;
    std::shared_ptr<const std::vector<uint8_t>> picture;          // what stands in all buffers from the start
    std::function<void(uint8_t* bytes, uint32_t sequence)> stamp; // called as such a frame is dequeued

    std::vector<ControlScript> controls; // by their numbers
    ControlCalls controlCalls = ControlCalls::All;
    bool tellsOfControls = true;
    bool takesHeldControls = true; // false: setting one that is inactive answers EIO, as webcams do

    // As many drivers do, all calls of the node but poll() run under one lock: while one takes long or is
    // held, the others wait for it.
    bool oneCallAtATime = true;
};

// One frame that the driver makes.
struct FrameScript {
    std::vector<uint8_t> bytes; // of all planes, one after the other
    uint32_t flags = 0;
    int sequence = -1;  // -1: the next
    int bytesUsed = -1; // -1: all
    int index = -1;     // -1: the buffer's own; else what DQBUF claims
    timeval time =
        {}; // what DQBUF says, if set; else now, if the device's timestamps are of the monotonic clock
    uint32_t field = V4L2_FIELD_NONE;
};

} // namespace ostrel::support

#endif
