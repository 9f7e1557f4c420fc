// A stream is finished outside the camera's lock, because its thread may be inside a sink's call that waits
// for this very lock. `finishing_` says that one is still on its way; who needs the device waits for it.
#include "platform/cameras/v4l2/v4l2_camera.h"

#include "platform/cameras/v4l2/messages.h"

#include <algorithm>
#include <cerrno>

namespace ostrel {
namespace cameras {
namespace v4l2 {

V4l2Camera::V4l2Camera(const std::shared_ptr<KernelCalls>& kernel,
                       const std::shared_ptr<Discovery>& discovery, const NodeFacts& facts,
                       const std::string& identifier, const std::string& displayName)
    : kernel_(kernel), discovery_(discovery), path_(facts.path), incarnation_(facts.incarnation),
      identifier_(identifier), displayName_(displayName) {}

V4l2Camera::~V4l2Camera() {
    V4l2Camera::close();
}

std::string V4l2Camera::where() const {
    return displayName_ + " (" + path_ + ")";
}

// False when it cannot be waited for, because the stream that is being finished waits for the calling thread.
bool V4l2Camera::waitUntilSettled(Lock& lock) {
    if (finishing_ != 0 && Stream::isDelivering())
        return false;
    settled_.wait(lock, [this] { return finishing_ == 0; });
    return true;
}

// Takes the stream out of use and finishes it with the lock released.
void V4l2Camera::retire(Lock& lock) {
    const std::shared_ptr<Stream> stream = stream_;
    retired_.erase(std::remove_if(retired_.begin(), retired_.end(),
                                  [](const std::weak_ptr<Stream>& old) { return old.expired(); }),
                   retired_.end());
    retired_.push_back(stream); // which may throw: the stream is in use until here
    stream_.reset();
    ++finishing_;
    lock.unlock();
    stream->finish();
    lock.lock();
    last_ = stream->statistics();
    gone_ = gone_ || stream->deviceIsGone();
    --finishing_;
    settled_.notify_all();
}

Error V4l2Camera::open() {
    Lock lock(mutex_);
    waitUntilSettled(lock);
    if (node_)
        return Error();
    if (gone_ || discovery_->incarnation(path_) != incarnation_) {
        gone_ = true;
        return unplugged(where());
    }
    std::shared_ptr<VideoNode> node = VideoNode::open(kernel_, path_);
    if (!node) {
        const int error = errno;
        gone_ = error == ENODEV || error == ENXIO || error == ENOENT;
        return openFailed(where(), error);
    }
    Abilities abilities;
    if (const int error = node->ask(abilities))
        return openFailed(where(), error);
    if (!abilities.capture || !abilities.streaming)
        return notACamera(where());
    node_ = std::move(node);
    return Error();
}

void V4l2Camera::close() {
    Lock lock(mutex_);
    while (stream_)
        retire(lock);
    // A thread that was stopped from inside its own sink's call holds the node until that call returns, but
    // does not use it any more.
    if (waitUntilSettled(lock) && node_)
        node_->close();
    node_.reset();
}

Error V4l2Camera::start(int width, int height, const std::shared_ptr<FrameSink>& sink) {
    Lock lock(mutex_);
    if (!waitUntilSettled(lock))
        return Error(where() + " is being stopped", EAGAIN);
    if (stream_ && stream_->join(sink))
        return Error();
    if (stream_)
        retire(lock);
    if (!node_)
        return Error(where() + " is not open");
    if (gone_)
        return unplugged(where());
    if (stream_) // another thread was quicker
        return stream_->join(sink) ? Error() : Error(where() + " is being stopped", EAGAIN);
    Size wanted;
    wanted.width = width;
    wanted.height = height;
    const auto stream = std::make_shared<Stream>(node_, where());
    const Error error = stream->begin(wanted, sink);
    if (!error)
        stream_ = stream;
    else if (error.code == ENODEV)
        gone_ = true;
    return error;
}

void V4l2Camera::stop(const std::shared_ptr<FrameSink>& sink) {
    Lock lock(mutex_);
    std::vector<std::shared_ptr<Stream>> streams(1, stream_);
    for (const std::weak_ptr<Stream>& old : retired_)
        streams.push_back(old.lock());
    lock.unlock();
    for (const std::shared_ptr<Stream>& stream : streams)
        if (stream)
            stream->leave(sink);
    streams.clear();
    lock.lock();
    if (stream_ && stream_->isDeserted())
        retire(lock);
}

bool V4l2Camera::attached() const {
    Lock lock(mutex_);
    if (gone_ || (stream_ && stream_->deviceIsGone()))
        return false;
    if (node_)
        return !node_->isGone();
    return discovery_->incarnation(path_) == incarnation_;
}

StreamStatistics V4l2Camera::statistics() const {
    Lock lock(mutex_);
    return stream_ ? stream_->statistics() : last_;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
