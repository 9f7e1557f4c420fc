#include "platform/cameras/streaming_camera.h"

#include "platform/cameras/change_watch.h"
#include "platform/cameras/messages.h"
#include "platform/cameras/wishes.h"

#include <algorithm>
#include <cerrno>
#include <new>

namespace ostrel {
namespace cameras {

// Waits until nobody else works with the backend. Not taken when that could never be: the one who does may be
// waiting for the sink's call that this thread is inside. Before it is given on, what others have left undone
// is done.
class StreamingCamera::Turn {
public:
    Turn(StreamingCamera& camera, Lock& lock) : camera_(camera), lock_(lock) {
        if (camera_.busy_ && camera_.isInsideCall())
            return;
        camera_.turnIsOver_.wait(lock_, [this] { return !camera_.busy_; });
        camera_.busy_ = true;
        taken_ = true;
    }
    ~Turn() {
        if (!taken_)
            return;
        if (!lock_.owns_lock())
            lock_.lock();
        camera_.settle(lock_);
        camera_.busy_ = false;
        camera_.turnIsOver_.notify_all();
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    explicit operator bool() const { return taken_; }

private:
    StreamingCamera& camera_;
    Lock& lock_;
    bool taken_ = false;
};

StreamingCamera::StreamingCamera(Identity identity, std::shared_ptr<Backend> backend,
                                 std::shared_ptr<Totals> totals)
    : identity_(std::move(identity)), backend_(std::move(backend)), totals_(std::move(totals)) {}

StreamingCamera::~StreamingCamera() {
    StreamingCamera::close();
}

Error StreamingCamera::open() {
    Lock lock(mutex_);
    const Turn turn(*this, lock);
    if (!turn)
        return beingStopped(identity_.where);
    if (open_)
        return Error();
    if (gone_)
        return unplugged(identity_.where);
    lock.unlock();
    const Error refused = backend_->attached() ? backend_->open() : unplugged(identity_.where);
    lock.lock();
    open_ = !refused;
    gone_ = gone_ || refused.code == ENODEV;
    if (open_)
        askForModes(lock);
    return refused;
}

Error StreamingCamera::modes(NativeModes& modes) {
    Lock lock(mutex_);
    // Whoever opens it for the first time asks on the way.
    turnIsOver_.wait(lock, [this] { return !busy_ || (modesAsked_ && !asking_); });
    if (!open_ && !busy_ && !gone_) {
        const Turn turn(*this, lock);
        asking_ = true;
        askForModes(lock);
        asking_ = false;
    }
    modes = modes_;
    return gone_ ? unplugged(identity_.where) : modesUnknown_;
}

// With the turn.
void StreamingCamera::askForModes(Lock& lock) {
    lock.unlock();
    NativeModes found;
    Error unknown;
    try {
        unknown = backend_->attached() ? backend_->modes(found) : unplugged(identity_.where);
    } catch (const std::bad_alloc&) {
        unknown = Error::numbered(ENOMEM);
    }
    lock.lock();
    if (!unknown || !found.empty() || modes_.empty())
        modes_.swap(found);
    modesUnknown_ = std::move(unknown);
    modesAsked_ = true;
}

void StreamingCamera::close() {
    Lock lock(mutex_);
    closeWanted_ = true;
    if (stream_)
        stream_->retire(true);    // nobody need wait for a better mode any more
    const Turn turn(*this, lock); // which does the rest at its end
}

// What stops and closes have left to whoever has the turn, its own included.
void StreamingCamera::settle(Lock& lock) {
    while (stream_ && stream_->retire(closeWanted_))
        finishStream(lock);
    if (closeWanted_ && open_)
        closeBackend(lock);
    closeWanted_ = false;
}

void StreamingCamera::finishStream(Lock& lock) {
    const std::shared_ptr<Stream> stream = stream_;
    if (stream->sinks().insideCall())
        remember(stream);
    lock.unlock();
    stream->finish();
    lock.lock();
    gone_ = gone_ || stream->deviceIsGone();
    stream_.reset();
}

void StreamingCamera::remember(const std::shared_ptr<Stream>& finished) {
    const auto place = std::find_if(finished_.begin(), finished_.end(),
                                    [](const std::weak_ptr<Stream>& old) { return old.expired(); });
    if (place != finished_.end())
        *place = finished;
    else
        finished_.push_back(finished);
}

void StreamingCamera::closeBackend(Lock& lock) {
    lock.unlock();
    backend_->close();
    lock.lock();
    open_ = false;
}

Error StreamingCamera::admitInput() {
    if (!attached())
        return unplugged(identity_.where);
    return backend_->admitInput();
}

Error StreamingCamera::start(int width, int height, const std::shared_ptr<FrameSink>& sink) {
    Size size;
    size.width = width;
    size.height = height;
    if (const Error refused = backend_->admitOutput())
        return refused;
    Lock lock(mutex_);
    if (stream_ && stream_->join(sink, size))
        return Error();
    const Turn turn(*this, lock);
    if (turn && stream_ && !stream_->admit(sink)) // it has ended
        finishStream(lock);
    if (!stream_)
        return startStream(lock, size, sink);
    const std::shared_ptr<Stream> stream = stream_;
    lock.unlock();
    if (!turn && !stream->admit(sink)) // whoever has the turn is stopping it
        return beingStopped(identity_.where);
    stream->widen(size, sink);
    return Error();
}

Error StreamingCamera::startStream(Lock& lock, const Size& size, const std::shared_ptr<FrameSink>& sink) {
    if (!open_)
        return notOpen(identity_.where);
    if (gone_)
        return unplugged(identity_.where);
    const auto figures = std::make_shared<Figures>(totals_);
    const auto stream = std::make_shared<Stream>(backend_, figures, identity_.where);
    stream->sinks().add(sink);
    finished_.reserve(finished_.size() + 1);
    stream_ = stream; // before it starts, so that a stop finds its sink
    figures_ = figures;
    lock.unlock();
    Error refused;
    try {
        Request request;
        request.size = size;
        request.wish = modeWish(identity_.identifier);
        refused = stream->begin(request);
    } catch (...) { // no memory, maybe with the backend started
        stream->finish();
        lock.lock();
        stream_.reset();
        throw;
    }
    if (refused)
        stream->finish(); // the sink may be being told of an end that came meanwhile
    lock.lock();
    if (refused) {
        stream_.reset();
        gone_ = gone_ || refused.code == ENODEV;
    }
    return refused;
}

void StreamingCamera::stop(const std::shared_ptr<FrameSink>& sink) {
    std::shared_ptr<Stream> stream; // let go of outside the lock
    Lock lock(mutex_);
    for (size_t i = 0; i < finished_.size(); ++i) {
        std::shared_ptr<Stream> old = finished_[i].lock();
        lock.unlock();
        if (old)
            old->leave(sink);
        old.reset();
        lock.lock();
    }
    stream = stream_;
    lock.unlock();
    if (!stream)
        return;
    stream->leave(sink);
    lock.lock();
    if (stream_ != stream || busy_ || !stream->sinks().empty())
        return; // whoever has the turn looks whether a sink is left
    const Turn turn(*this, lock);
}

bool StreamingCamera::attached() const {
    {
        Lock lock(mutex_);
        if (gone_ || (stream_ && stream_->deviceIsGone()))
            return false;
    }
    return backend_->attached();
}

StreamStatistics StreamingCamera::statistics() const {
    std::shared_ptr<Figures> figures;
    {
        Lock lock(mutex_);
        figures = figures_;
    }
    return figures ? figures->snapshot() : StreamStatistics();
}

void StreamingCamera::unplug() {
    std::shared_ptr<Stream> stream;
    {
        Lock lock(mutex_);
        gone_ = true;
        stream = stream_;
    }
    changesHere().raise();
    if (const std::shared_ptr<Controls> controls = backend_->controls())
        controls->leave();
    if (stream)
        stream->end(unplugged(identity_.where));
}

} // namespace cameras
} // namespace ostrel
