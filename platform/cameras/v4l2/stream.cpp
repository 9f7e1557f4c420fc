#include "platform/cameras/v4l2/stream.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pixels/jpeg_check.h"
#include "platform/cameras/v4l2/messages.h"
#include "platform/cameras/v4l2/pixel_format.h"

#include <cerrno>
#include <new>
#include <poll.h>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// How long the thread waits for a frame before it asks whether the device is still there. A stop does not
// wait for it.
const int kPatienceMilliseconds = 1000;

// Drivers report EIO for one lost picture and go on; one that has nothing else to say has given up.
const int kMostFailuresInARow = 10;

thread_local bool isDeliveryThread = false;

} // namespace

Stream::Stream(const std::shared_ptr<VideoNode>& node, const std::string& where)
    : node_(node), where_(where), counters_(std::make_shared<StreamCounters>()) {}

bool Stream::isDelivering() {
    return isDeliveryThread;
}

Error Stream::begin(const Size& wanted, const std::shared_ptr<FrameSink>& sink) {
    Abilities abilities;
    if (const int error = node_->ask(abilities))
        return startFailed(where_, "VIDIOC_QUERYCAP", error, wanted);
    Granted granted;
    if (Error error = negotiate(wanted, abilities.multiplanar, granted))
        return error;
    queue_ = std::make_shared<BufferQueue>(node_, granted, counters_);
    const char* step = "";
    if (const int error = queue_->open(step))
        return startFailed(where_, step, error, granted.size);
    counters_->change([&granted](StreamStatistics& figures) {
        figures.grantedFormat = fourccText(granted.fourcc);
        figures.grantedWidth = granted.size.width;
        figures.grantedHeight = granted.size.height;
        figures.grantedRate = granted.interval.rate();
    });
    sinks_.add(sink);
    const auto self = shared_from_this();
    if (!thread_.start("ostrel-v4l2", [self](const StopSignal& stop) { self->run(stop); })) {
        queue_->close();
        return startFailed(where_, "starting a thread", EAGAIN, granted.size);
    }
    return Error();
}

Error Stream::negotiate(const Size& wanted, bool multiplanar, Granted& granted) {
    const std::vector<Candidate> candidates = ranked(node_->candidates(multiplanar, wanted), wanted);
    if (candidates.empty())
        return node_->isGone() ? unplugged(where_) : noUsableFormat(where_);
    int refusal = 0;
    for (const Candidate& candidate : candidates) {
        const int error = node_->setFormat(candidate, multiplanar, granted);
        if (!error) {
            node_->setInterval(candidate.interval, granted);
            return Error();
        }
        if (!refusal)
            refusal = error;
        if (error != EINVAL) // the others would fare no better
            break;
    }
    return startFailed(where_, "VIDIOC_S_FMT", refusal, candidates.front().size);
}

bool Stream::join(const std::shared_ptr<FrameSink>& sink) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (ended_)
        return false;
    sinks_.add(sink);
    return true;
}

bool Stream::hasEnded() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return ended_;
}

void Stream::finish() {
    thread_.stop();
    queue_->close();
}

void Stream::run(const StopSignal& stop) {
    isDeliveryThread = true;
    Error why;
    while (!stop.raised() && !why)
        why = serve(stop);
    if (!why || stop.raised()) // stopped, the device may be closed already
        return;
    if (node_->isGone() || why.code == ENODEV)
        gone_.store(true, std::memory_order_release);
    queue_->close();
    counters_->change([&why](StreamStatistics& figures) { figures.ended = why.text; });
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
    }
    sinks_.end(why);
}

Error Stream::serve(const StopSignal& stop) {
    if (const int error = queue_->requeueRefused())
        return ended(error);
    pollfd descriptors[2] = {{node_->descriptor(), POLLIN, 0}, {stop.descriptor(), POLLIN, 0}};
    const int ready = node_->kernel().poll(descriptors, 2, kPatienceMilliseconds);
    if (stop.raised())
        return Error();
    if (ready < 0)
        return ended(errno);
    if (ready == 0)
        return node_->isGone() ? unplugged(where_) : Error();
    return drain(descriptors[0].revents & (POLLERR | POLLHUP | POLLNVAL));
}

// Takes everything that is ready and delivers the newest. `broken`: poll() says that more will not come.
Error Stream::drain(bool broken) {
    Filled newest;
    bool found = false;
    Error why;
    // A driver that is always ready must not keep the frames from being delivered.
    for (int left = 64; left > 0; --left) {
        Filled filled;
        if (const int error = queue_->dequeue(filled)) {
            why = dequeueFailed(error, broken);
            break;
        }
        failuresInARow_ = 0;
        countLost(filled.sequence);
        if (!accept(filled)) {
            queue_->requeue(filled.index);
            continue;
        }
        if (found) {
            queue_->requeue(newest.index);
            counters_->change([](StreamStatistics& figures) { ++figures.skipped; });
        }
        newest = filled;
        found = true;
        if (!broken && isTheLast(filled))
            break;
    }
    if (found)
        deliver(newest);
    return why;
}

// Whether no other frame can be there yet, so that the driver need not be asked. A wrong guess harms nothing:
// the next poll() returns at once.
bool Stream::isTheLast(const Filled& filled) const {
    const double rate = queue_->granted().interval.rate();
    if (filled.time == 0 || rate <= 0)
        return false;
    const int64_t age = monotonicNanoseconds() - filled.time;
    return age >= 0 && static_cast<double>(age) < 0.5e9 / rate;
}

// No error when the stream can go on.
Error Stream::dequeueFailed(int error, bool broken) {
    if (broken)
        return ended(error == EAGAIN ? EIO : error);
    if (error == EAGAIN)
        return Error();
    if (error == EIO && ++failuresInARow_ < kMostFailuresInARow)
        return Error();
    return ended(error);
}

bool Stream::accept(const Filled& filled) {
    const char* fault = nullptr;
    const Granted& granted = queue_->granted();
    if (filled.damaged)
        fault = "damaged";
    else if (granted.layout == pixels::Layout::Jpeg)
        fault = pixels::faultOfJpeg(filled.data, filled.bytes, granted.size.width, granted.size.height);
    else if (filled.bytes <
             pixels::neededBytes(granted.layout, granted.size.width, granted.size.height, granted.stride))
        fault = filled.bytes == 0 ? "empty" : "truncated";
    if (fault)
        counters_->drop(fault);
    return !fault;
}

void Stream::countLost(uint32_t sequence) {
    // Numbers wrap, may start anywhere, and some drivers leave them at zero or begin again.
    const uint32_t gap = sequence - lastSequence_ - 1;
    if (sequenceKnown_ && gap != 0 && gap < 0x80000000u)
        counters_->change([gap](StreamStatistics& figures) { figures.lost += gap; });
    sequenceKnown_ = true;
    lastSequence_ = sequence;
}

void Stream::deliver(const Filled& filled) {
    std::shared_ptr<CameraFrame> frame; // gives the buffer back when it goes
    try {
        frame = queue_->frame(filled);
        counters_->change([](StreamStatistics& figures) { ++figures.delivered; });
        sinks_.deliver(frame);
    } catch (const std::bad_alloc&) {
        // A frame is lost, but not its buffer; on this thread nobody else could catch it.
        if (!frame)
            queue_->requeue(filled.index);
    }
}

Error Stream::ended(int error) const {
    // A driver that has lost its device stops its queues first, which looks like a wrong call from here.
    return node_->isGone() ? unplugged(where_) : streamFailed(where_, error);
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
