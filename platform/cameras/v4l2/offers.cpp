#include "platform/cameras/v4l2/offers.h"

#include "platform/cameras/pixels/pixel_format.h"
#include "platform/cameras/wished_candidates.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <linux/videodev2.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// A driver that never says "no more" must not hold up anybody for long.
const uint32_t MOST_ENTRIES = 256;
const size_t MOST_MODES = 4096;

Size sizeOf(uint32_t width, uint32_t height) {
    return Size(sideOf(width), sideOf(height));
}

Interval intervalOf(const v4l2_fract& fraction) {
    Interval interval;
    interval.numerator = fraction.numerator;
    interval.denominator = fraction.denominator;
    return interval;
}

bool isSame(const SizeRange& a, const SizeRange& b) {
    return a.least == b.least && a.most == b.most;
}

bool isSame(const IntervalRange& a, const IntervalRange& b) {
    return a.shortest.rate() == b.shortest.rate() && a.longest.rate() == b.longest.rate();
}

// Some drivers list a thing twice, and some the same one for ever.
template <typename Entry>
void addOnce(std::vector<Entry>& entries, const Entry& one) {
    const auto isOne = [&one](const Entry& other) { return isSame(one, other); };
    if (std::none_of(entries.begin(), entries.end(), isOne))
        entries.push_back(one);
}

// The end of a list; or the driver knows no such list.
bool isEnd(int error) {
    return error == EINVAL || error == ENOTTY;
}

SizeRange rangeOf(const v4l2_frmsizeenum& entry) {
    SizeRange range;
    if (entry.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
        range.least = range.most = sizeOf(entry.discrete.width, entry.discrete.height);
        return range;
    }
    range.least = sizeOf(entry.stepwise.min_width, entry.stepwise.min_height);
    range.most = sizeOf(entry.stepwise.max_width, entry.stepwise.max_height);
    if (entry.type == V4L2_FRMSIZE_TYPE_STEPWISE)
        range.step = sizeOf(entry.stepwise.step_width, entry.stepwise.step_height);
    return range;
}

IntervalRange rangeOf(const v4l2_frmivalenum& entry) {
    if (entry.type == V4L2_FRMIVAL_TYPE_DISCRETE)
        return {intervalOf(entry.discrete), intervalOf(entry.discrete)};
    return {intervalOf(entry.stepwise.min), intervalOf(entry.stepwise.max)};
}

// Asks a node for its lists, and keeps the first error that is no end of one.
class Questions {
public:
    Questions(const VideoNode& node, bool multiplanar) : node_(node), multiplanar_(multiplanar) {}

    std::vector<uint32_t> formats();
    std::vector<SizeRange> sizes(uint32_t fourcc);
    std::vector<IntervalRange> intervals(uint32_t fourcc, const Size& frame);
    // Of a range of sizes, at both of its ends.
    std::vector<IntervalRange> intervals(uint32_t fourcc, const SizeRange& range);
    int error() const { return error_; }

private:
    bool ask(unsigned long request, void* argument) {
        const int error = node_.ioctl(request, argument);
        if (error && !isEnd(error) && !error_)
            error_ = error;
        return error == 0;
    }

    const VideoNode& node_;
    const bool multiplanar_;
    int error_ = 0;
};

std::vector<uint32_t> Questions::formats() {
    std::vector<uint32_t> result;
    for (uint32_t index = 0; index < MOST_ENTRIES; ++index) {
        v4l2_fmtdesc description = {};
        description.index = index;
        description.type = bufferType(multiplanar_);
        if (!ask(VIDIOC_ENUM_FMT, &description))
            break;
        if (std::find(result.begin(), result.end(), description.pixelformat) == result.end())
            result.push_back(description.pixelformat);
    }
    return result;
}

std::vector<SizeRange> Questions::sizes(uint32_t fourcc) {
    std::vector<SizeRange> result;
    for (uint32_t index = 0; index < MOST_ENTRIES; ++index) {
        v4l2_frmsizeenum entry = {};
        entry.index = index;
        entry.pixel_format = fourcc;
        if (!ask(VIDIOC_ENUM_FRAMESIZES, &entry))
            break;
        const SizeRange range = rangeOf(entry);
        if (range.most.width > 0 && range.most.height > 0)
            addOnce(result, range);
        if (entry.type != V4L2_FRMSIZE_TYPE_DISCRETE)
            break; // a range has one entry
    }
    return result;
}

std::vector<IntervalRange> Questions::intervals(uint32_t fourcc, const Size& frame) {
    std::vector<IntervalRange> result;
    for (uint32_t index = 0; index < MOST_ENTRIES; ++index) {
        v4l2_frmivalenum entry = {};
        entry.index = index;
        entry.pixel_format = fourcc;
        entry.width = static_cast<uint32_t>(frame.width);
        entry.height = static_cast<uint32_t>(frame.height);
        if (!ask(VIDIOC_ENUM_FRAMEINTERVALS, &entry))
            break;
        const IntervalRange range = rangeOf(entry);
        if (range.shortest.known())
            addOnce(result, range);
        if (entry.type != V4L2_FRMIVAL_TYPE_DISCRETE)
            break;
    }
    return result;
}

std::vector<IntervalRange> Questions::intervals(uint32_t fourcc, const SizeRange& range) {
    std::vector<IntervalRange> result = intervals(fourcc, range.most);
    if (!(range.least == range.most))
        for (const IntervalRange& one : intervals(fourcc, range.least))
            addOnce(result, one);
    return result;
}

std::function<bool(uint32_t)> convertibleBy(bool multiplanar) {
    return [multiplanar](uint32_t fourcc) { return pixels::isConvertible(fourcc, multiplanar); };
}

} // namespace

std::vector<uint32_t> offeredFormats(const VideoNode& node, bool multiplanar) {
    return Questions(node, multiplanar).formats();
}

std::vector<uint32_t> convertibleFormats(const VideoNode& node, bool multiplanar) {
    return formatsFor(offeredFormats(node, multiplanar), convertibleBy(multiplanar), ModeWish(), false);
}

int offeredModes(const VideoNode& node, bool multiplanar, NativeModes& modes) {
    Questions questions(node, multiplanar);
    for (const uint32_t fourcc : questions.formats()) {
        NativeMode mode;
        mode.format = pixels::fourccText(fourcc);
        mode.hasPicture = pixels::isConvertible(fourcc, multiplanar);
        std::vector<SizeRange> sizes = questions.sizes(fourcc);
        if (sizes.empty())
            sizes.push_back(SizeRange());
        for (const SizeRange& range : sizes) {
            mode.sizes = range;
            std::vector<IntervalRange> intervals;
            if (range.most.width != 0)
                intervals = questions.intervals(fourcc, range);
            if (intervals.empty())
                intervals.push_back(IntervalRange());
            for (const IntervalRange& one : intervals) {
                mode.intervals = one;
                modes.push_back(mode);
            }
            if (modes.size() >= MOST_MODES)
                return questions.error();
        }
    }
    return questions.error();
}

std::vector<Candidate> candidates(const VideoNode& node, bool multiplanar, const Request& request,
                                  bool nativeOnly) {
    Questions questions(node, multiplanar);
    std::vector<Candidate> result;
    for (const uint32_t fourcc :
         formatsFor(questions.formats(), convertibleBy(multiplanar), request.wish, nativeOnly))
        addCandidates(
            fourcc, questions.sizes(fourcc),
            [&](const Size& size) { return questions.intervals(fourcc, size); }, request.size, request.wish,
            result);
    return result;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
