// The mode is changed, and a stalled camera started again, by the delivery thread between two frames: nobody
// else touches the backend while it runs, so no such step needs to be guarded against another.
#include "platform/cameras/stream.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/change_watch.h"
#include "platform/cameras/messages.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace ostrel {
namespace cameras {

namespace {

// More frames a second are not worth keeping a smaller picture for.
const double ENOUGH_RATE = 30;

bool fits(const Size& size, const Size& into) {
    return size.width <= into.width && size.height <= into.height;
}

Size larger(const Size& a, const Size& b) {
    Size size;
    size.width = std::max(a.width, b.width);
    size.height = std::max(a.height, b.height);
    return size;
}

// What is said to people must not cost a frame: without memory it is left unsaid.
template <typename Say>
void tell(Say say) {
    try {
        say();
    } catch (const std::bad_alloc&) {
    }
}

} // namespace

Stream::Stream(std::shared_ptr<Backend> backend, std::shared_ptr<Figures> figures, std::string where)
    : backend_(std::move(backend)), figures_(std::move(figures)), where_(std::move(where)) {}

Error Stream::begin(const Request& request) {
    request_ = request;
    Error refused = startBackend(request_);
    if (refused && refused.text.empty()) // for want of memory, which may be there for a few words
        refused.text = where_ + " could not be started: " + reason(refused.code);
    if (refused)
        return refused;
    {
        Lock lock(mutex_);
        if (phase_ == Phase::Finished)
            return Error(); // whoever has retired it waits to finish it
        if (phase_ == Phase::Ended) {
            refused = unplugged(where_);
        } else if (const char* name = backend_->threadName()) {
            const auto self = shared_from_this();
            if (!thread_.start(name, [self](const StopSignal& stop) { self->run(stop); }))
                refused = noThread(where_);
        }
        if (!refused)
            phase_ = Phase::Running;
        changed_.notify_all();
    }
    if (refused)
        stopBackend();
    return refused;
}

Error Stream::startBackend(const Request& request) noexcept {
    try {
        Error refused = backend_->start(request, shared_from_this());
        Lock lock(mutex_);
        backendRuns_ = !refused;
        return refused;
    } catch (const std::bad_alloc&) {
        return Error::numbered(ENOMEM);
    }
}

void Stream::stopBackend() {
    {
        Lock lock(mutex_);
        if (!backendRuns_)
            return;
        backendRuns_ = false;
    }
    backend_->stop();
}

bool Stream::covers(const Size& size) const {
    return fits(size, request_.size) || fits(size, figures_->granted().size);
}

bool Stream::join(const std::shared_ptr<FrameSink>& sink, const Size& size) {
    Lock lock(mutex_);
    return phase_ == Phase::Running && covers(size) && sinks_.add(sink);
}

bool Stream::admit(const std::shared_ptr<FrameSink>& sink) {
    Lock lock(mutex_);
    changed_.wait(lock, [this] { return phase_ != Phase::Starting; });
    return phase_ == Phase::Running && sinks_.add(sink);
}

void Stream::widen(const Size& size, const std::shared_ptr<FrameSink>& sink) {
    const bool inside = sinks_.insideCall();
    Lock lock(mutex_);
    if (phase_ != Phase::Running || !thread_.running() || covers(size))
        return;
    wider_ = larger(larger(request_.size, wider_), size);
    thread_.signal().wake();
    if (inside) // else the delivery thread would wait for itself
        return;
    changed_.wait(lock, [&] { return wider_.width == 0 || phase_ != Phase::Running || !sinks_.has(sink); });
}

void Stream::leave(const std::shared_ptr<FrameSink>& sink) {
    sinks_.remove(sink);
    Lock lock(mutex_);
    changed_.notify_all();
}

bool Stream::retire(bool force) {
    Lock lock(mutex_);
    if (!force && !sinks_.empty())
        return false;
    phase_ = Phase::Finished;
    changed_.notify_all();
    return true;
}

bool Stream::deliver(const std::shared_ptr<CameraFrame>& frame) {
    return sinks_.deliver(frame, figures_.get());
}

void Stream::end(const Error& why) {
    {
        Lock lock(mutex_);
        if (phase_ == Phase::Finished)
            return;
        if (phase_ == Phase::Running && thread_.running())
            thread_.raise();
        if (phase_ != Phase::Ended)
            figures_->setEnded(why);
        phase_ = Phase::Ended;
        changed_.notify_all();
    }
    sinks_.end(why);
}

void Stream::finish() {
    retire(true);
    sinks_.shut();
    // From inside a sink's call the thread ends once that call returns. It touches the backend no more, which
    // may be started again, closed and dropped before.
    thread_.stop();
    stopBackend();
}

void Stream::run(const StopSignal& stop) {
    watch_.begin(monotonicNanoseconds());
    Error why;
    while (!stop.raised() && !why)
        why = serve(stop);
    if (stop.raised())
        return;
    if (why.code == ENODEV || !backend_->attached()) {
        gone_.store(true, std::memory_order_release);
        changesHere().raise(); // in a container nobody else may tell of it
    }
    stopBackend();
    end(why);
}

// One turn of the delivery thread. No error when the stream can go on.
Error Stream::serve(const StopSignal& stop) {
    Size wider;
    {
        Lock lock(mutex_);
        wider = wider_;
    }
    if (wider.width != 0)
        return changeMode(stop, wider);
    Arrival arrival;
    Error why;
    try {
        why = backend_->next(stop, arrival);
        if (arrival.frame)
            deliver(arrival.frame);
    } catch (const std::bad_alloc&) {
        figures_->drop(Drop::NoMemory); // a frame is lost; on this thread nobody else could catch it
    }
    if (arrival.sourceChanged && !why && !stop.raised())
        return followSource(stop);
    const int64_t now = monotonicNanoseconds();
    if (arrival.frame || arrival.signOfLife) {
        if (watch_.frameCame(now))
            figures_->setStalled(std::string());
    } else if (!why && !stop.raised() && watch_.isSilent(now) &&
               watch_.isDue(now, backend_->longestPause())) {
        return revive(stop);
    }
    return why;
}

// Asked first, so that what cannot be had interrupts nobody. What is refused after that gets its old mode
// back.
Error Stream::changeMode(const StopSignal& stop, const Size& wider) {
    stop.clearWake();
    Request request = request_; // takes no memory: the format of a wish is a few characters
    request.size = wider;
    request.leastRate = std::min(ENOUGH_RATE, figures_->granted().rate());
    const Size before = figures_->granted().size;
    const Error refused = startWider(request);
    Error why;
    if (refused) {
        tell([&] { figures_->setShared(sharedAsItIs(where_, before, wider, refused)); });
        why = resume(stop);
    }
    watch_.restarted(monotonicNanoseconds());
    Lock lock(mutex_);
    if (!refused) {
        request_ = request;
        figures_->setShared(std::string());
    }
    if (wider_ == wider) // else more was asked for meanwhile
        wider_ = Size();
    changed_.notify_all();
    return why;
}

Error Stream::startWider(const Request& request) noexcept {
    try {
        if (!backend_->canServeBetter(request))
            return Error::numbered(EINVAL);
    } catch (const std::bad_alloc&) {
        return Error::numbered(ENOMEM);
    }
    stopBackend();
    return startBackend(request);
}

// Gives the stream the mode that it had, unless it still has it.
Error Stream::resume(const StopSignal& stop) {
    {
        Lock lock(mutex_);
        if (backendRuns_)
            return Error();
    }
    Error refused = startBackend(request_);
    return refused ? keepTrying(stop, std::move(refused)) : Error();
}

// A camera that sends nothing is started again, as many drivers need it after a lost packet or a suspend.
Error Stream::revive(const StopSignal& stop) {
    figures_->countRestart();
    tell([&] { figures_->setStalled(stalled(where_)); });
    const Error why = startAnew(stop);
    if (!why && watch_.hasGivenUp())
        tell([&] { figures_->setStalled(stalledForGood(where_, StallWatch::MOST_RESTARTS)); });
    return why;
}

// The rate that was worth keeping was that of another source.
Error Stream::followSource(const StopSignal& stop) {
    {
        Lock lock(mutex_);
        request_.leastRate = 0;
    }
    return startAnew(stop);
}

// For the same request, in whatever mode suits it now.
Error Stream::startAnew(const StopSignal& stop) {
    Error refused;
    try {
        refused = backend_->restart(request_, shared_from_this());
    } catch (const std::bad_alloc&) {
        refused = Error::numbered(ENOMEM);
    }
    Error why;
    if (refused) {
        {
            Lock lock(mutex_);
            backendRuns_ = false;
        }
        why = keepTrying(stop, std::move(refused)); // copied, it might need memory
    }
    watch_.restarted(monotonicNanoseconds());
    return why;
}

// The backend has stopped and would not start again: another program may have taken the device for a moment.
Error Stream::keepTrying(const StopSignal& stop, Error refused) {
    while (refused && refused.code != ENODEV && watch_.mayTryAgain()) {
        if (stop.sleepUntil(monotonicNanoseconds() + watch_.retryPause()))
            return Error();
        figures_->countRestart();
        refused = startBackend(request_);
    }
    return refused;
}

} // namespace cameras
} // namespace ostrel
