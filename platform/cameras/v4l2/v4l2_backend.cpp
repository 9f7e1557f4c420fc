#include "platform/cameras/v4l2/v4l2_backend.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/fallback_backend.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/pixels/pixel_format.h"
#include "platform/cameras/start_attempts.h"
#include "platform/cameras/unusable_formats.h"
#include "platform/cameras/v4l2/controls.h"
#include "platform/cameras/v4l2/examination.h"
#include "platform/cameras/v4l2/offers.h"
#include "platform/cameras/v4l2/signal_source.h"
#include "platform/cameras/wishes.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <poll.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// How long a wait for a frame takes at most, before the device is asked whether it is still there.
const int TIMEOUT_MILLISECONDS = 1000;

// Drivers report EIO for one lost picture and go on; one that has nothing else to say has given up.
const int MOST_FAILURES_IN_A_ROW = 10;

// A driver that is always ready must not keep the frames from being delivered.
const int MOST_FRAMES_AT_ONCE = 64;

} // namespace

V4l2Backend::V4l2Backend(const std::shared_ptr<KernelCalls>& kernel,
                         const std::shared_ptr<Discovery>& discovery, const NodeFacts& facts,
                         const std::string& where)
    : kernel_(kernel), discovery_(discovery), path_(facts.path), generation_(facts.generation), where_(where),
      controls_(std::make_shared<V4l2Controls>(kernel, discovery, facts, where)) {}

bool V4l2Backend::attached() const {
    return discovery_->generation(path_) == generation_;
}

Error V4l2Backend::open() {
    return openNode(node_, multiplanar_);
}

Error V4l2Backend::openNode(std::shared_ptr<VideoNode>& opened, bool& multiplanar) const {
    std::shared_ptr<VideoNode> node = VideoNode::open(kernel_, path_);
    if (!node)
        return openFailed(where_, errno);
    Capabilities capabilities;
    if (const int error = node->query(capabilities))
        return openFailed(where_, error);
    if (!capabilities.capture || !capabilities.streaming)
        return notACamera(where_);
    multiplanar = capabilities.multiplanar;
    opened = std::move(node);
    return Error();
}

void V4l2Backend::close() {
    node_->close(); // frames that are still held keep the object, but have no use for the device
    node_.reset();
}

Error V4l2Backend::modes(NativeModes& modes) {
    std::shared_ptr<VideoNode> node = node_;
    bool multiplanar = multiplanar_;
    if (!node) {
        if (const Error refused = openNode(node, multiplanar))
            return refused;
    }
    const int error = offeredModes(*node, multiplanar, modes);
    return error ? modesUntold(where_, error) : Error();
}

// The best first. What a running stream must not lose is left out.
std::vector<Candidate> V4l2Backend::candidatesFor(const Request& request) const {
    return ranked(candidates(*node_, multiplanar_, request, nativeOnlyIsListed()), request.size,
                  request.leastRate);
}

Error V4l2Backend::start(const Request& request, const std::shared_ptr<Outlet>& outlet) {
    followSource(*node_);
    const std::vector<Candidate> found = candidatesFor(request);
    if (found.empty())
        return nothingFits(request);
    figures_ = outlet->figures();
    figures_->setWay("V4L2 (" + path_ + ")");
    return startFirst(
        where_, found,
        [&](const Candidate& candidate, std::string& step) { return tryToStart(candidate, request, step); },
        [&] { return node_->isGone(); });
}

Error V4l2Backend::nothingFits(const Request& request) const {
    if (node_->isGone())
        return unplugged(where_);
    if (!request.wish.any())
        return modeNotOffered(where_, request.wish);
    return noUsableFormat(where_, unusableFormats(offeredFormats(*node_, multiplanar_)));
}

// 0, or the errno of the step that failed; nothing of the driver's is held then.
int V4l2Backend::tryToStart(const Candidate& candidate, const Request& request, std::string& step) {
    Granted granted;
    step = "VIDIOC_S_FMT";
    if (const int error = node_->setFormat(candidate, multiplanar_, granted))
        return error;
    node_->setInterval(candidate.interval, granted);
    if (isSlower(granted.interval, request.leastRate)) {
        step = "VIDIOC_S_PARM";
        return EINVAL; // granted more slowly than it was offered
    }
    const auto queue = std::make_shared<BufferQueue>(node_, granted, figures_);
    if (const int error = queue->open(step))
        return error;
    queue_ = queue;
    gaps_ = SequenceGaps();
    failuresInARow_ = 0;
    Mode mode;
    mode.format = pixels::fourccText(granted.fourcc);
    mode.size = granted.size;
    mode.interval = granted.interval;
    mode.hasPicture = granted.layout != pixels::Layout::Opaque;
    figures_->setGranted(mode);
    return 0;
}

void V4l2Backend::stop() {
    queue_->close();
    queue_.reset();
}

bool V4l2Backend::canServeBetter(const Request& request) {
    const Size running = queue_->granted().size;
    for (const Candidate& candidate : candidatesFor(request)) {
        const bool larger = candidate.size.width >= running.width &&
                            candidate.size.height >= running.height && !(candidate.size == running);
        if (larger && node_->wouldGrant(candidate, multiplanar_))
            return true;
    }
    return false;
}

Error V4l2Backend::next(const StopSignal& stop, Arrival& arrival) {
    if (const int error = queue_->requeueRefused())
        return ended(error);
    pollfd descriptors[2] = {{node_->descriptor(), POLLIN | POLLPRI, 0}, {stop.descriptor(), POLLIN, 0}};
    const int ready = kernel_->poll(descriptors, 2, TIMEOUT_MILLISECONDS);
    if (stop.raised())
        return Error();
    if (ready < 0)
        return ended(errno);
    if (ready == 0)
        return node_->isGone() ? unplugged(where_) : Error();
    if (descriptors[0].revents == 0)
        return Error(); // woken
    if ((descriptors[0].revents & POLLPRI) && sourceHasChanged(*node_)) {
        arrival.sourceChanged = true; // what the buffers hold is of the old mode, or of none
        return Error();
    }
    return drain(descriptors[0].revents & (POLLERR | POLLHUP | POLLNVAL), arrival);
}

// Takes everything that is ready and keeps the newest. `broken`: poll() says that more will not come.
Error V4l2Backend::drain(bool broken, Arrival& arrival) {
    Filled newest;
    bool found = false;
    Error why;
    for (int left = MOST_FRAMES_AT_ONCE; left > 0; --left) {
        Filled filled;
        if (const int error = queue_->dequeue(filled)) {
            why = dequeueFailed(error, broken);
            break;
        }
        arrival.signOfLife = true;
        failuresInARow_ = 0;
        figures_->countLost(gaps_.before(filled.sequence));
        if (!accept(filled)) {
            queue_->requeue(filled.index);
            continue;
        }
        if (found) {
            queue_->requeue(newest.index);
            figures_->countSkipped(1);
        }
        newest = filled;
        found = true;
        if (!broken && isTheLast(filled))
            break;
    }
    if (found) {
        try {
            arrival.frame = queue_->frame(newest);
        } catch (const std::bad_alloc&) {
            figures_->drop(Drop::NoMemory); // a frame is lost, but not its buffer
            queue_->requeue(newest.index);
        }
    }
    return why;
}

// Whether no other frame can be there yet, so that the driver need not be asked. A wrong guess harms nothing:
// the next poll() returns at once.
bool V4l2Backend::isTheLast(const Filled& filled) const {
    const double rate = queue_->granted().interval.rate();
    if (filled.time == 0 || rate <= 0)
        return false;
    const int64_t age = monotonicNanoseconds() - filled.time;
    return age >= 0 && static_cast<double>(age) < 0.5e9 / rate;
}

// No error when the stream can go on.
Error V4l2Backend::dequeueFailed(int error, bool broken) {
    if (broken)
        return ended(error == EAGAIN ? EIO : error);
    if (error == EAGAIN)
        return Error();
    if (error == EIO && ++failuresInARow_ < MOST_FAILURES_IN_A_ROW)
        return Error();
    return ended(error);
}

bool V4l2Backend::accept(const Filled& filled) {
    if (filled.damaged) {
        figures_->drop(Drop::Damaged);
        return false;
    }
    const pixels::Fault fault = pixels::faultOf(queue_->picture(filled));
    if (fault != pixels::Fault::None)
        figures_->drop(fault);
    return fault == pixels::Fault::None;
}

Error V4l2Backend::ended(int error) const {
    // A driver that has lost its device stops its queues first, which looks like a wrong call from here.
    return node_->isGone() ? unplugged(where_) : streamFailed(where_, error);
}

int64_t V4l2Backend::longestPause() {
    if (hasNoSignal(*node_))
        return 0;
    const double rate = queue_->granted().interval.rate();
    const int64_t fiveIntervals =
        rate > 0 ? static_cast<int64_t>(5 * static_cast<double>(NANOSECONDS_PER_SECOND) / rate) : 1;
    return std::max(fiveIntervals, 3 * node_->exposureNanoseconds());
}

std::shared_ptr<StreamingCamera> makeCamera(const std::shared_ptr<KernelCalls>& kernel,
                                            const std::shared_ptr<Discovery>& discovery,
                                            const NodeFacts& facts, const std::string& identifier,
                                            const std::string& displayName, const NodeTexts& texts) {
    const std::string where = displayName + " (" + facts.path + ")";
    auto node = std::make_shared<V4l2Backend>(kernel, discovery, facts, where);
    std::vector<uint64_t> devices;
    if (facts.device != 0)
        devices.push_back(facts.device);
    return std::make_shared<StreamingCamera>(
        StreamingCamera::Identity{identifier, displayName, where, detailsOf(facts, texts), devices},
        std::make_shared<FallbackBackend>(std::move(node), facts.device));
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
