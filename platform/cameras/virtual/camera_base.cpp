#include "platform/cameras/virtual/camera_base.h"

#include <cerrno>

namespace ostrel {
namespace cameras {

VirtualCamera::VirtualCamera(std::shared_ptr<VirtualControls> controls) : controls_(std::move(controls)) {}

VirtualCamera::~VirtualCamera() {
    if (stream_)
        stream_->shut();
}

Error VirtualCamera::error(const char* what, int number) const {
    return Error(controls_->displayName + " " + what, number);
}

Error VirtualCamera::open() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!attached_)
        return error("was unplugged", ENODEV);
    if (controls_->told(VIRTUAL_CAMERA_FAULT_OPEN))
        return error("was told not to open");
    if (open_)
        return Error();
    const Error failed = prepare();
    open_ = !failed;
    return failed;
}

void VirtualCamera::close() {
    std::shared_ptr<VirtualStream> stream;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!open_)
            return;
        open_ = false;
        stream = stream_;
    }
    // stream_ stays meanwhile, so that a stop() at the same time waits for its sink as well.
    if (stream)
        stream->shut();
    std::lock_guard<std::mutex> lock(mutex_);
    if (stream_ == stream)
        stream_.reset();
    if (!open_)
        release();
}

Error VirtualCamera::admitInput() {
    if (controls_->told(VIRTUAL_CAMERA_FAULT_INPUT))
        return error("was told to be refused as an input");
    return Error();
}

Error VirtualCamera::start(int, int, const std::shared_ptr<FrameSink>& sink) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!attached_)
        return error("was unplugged", ENODEV);
    if (!open_)
        return error("is not open");
    if (controls_->told(VIRTUAL_CAMERA_FAULT_OUTPUT))
        return error("was told to refuse the output");
    if (stream_)
        return stream_->join(sink) ? Error() : Error(figures_->snapshot().ended);
    auto stream = std::make_shared<VirtualStream>(controls_);
    stream->join(sink);
    figures_ = stream->figures();
    const Error failed = begin(stream);
    if (!failed)
        stream_ = stream; // a thread that is quicker waits for the lock before it looks
    return failed;
}

void VirtualCamera::stop(const std::shared_ptr<FrameSink>& sink) {
    std::shared_ptr<VirtualStream> current = stream();
    if (!current)
        return;
    current->sinks().remove(sink);
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (stream_ != current || !current->sinks().empty())
            return;
        stream_.reset();
    }
    current->shut();
}

bool VirtualCamera::attached() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return attached_;
}

StreamStatistics VirtualCamera::statistics() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return figures_ ? figures_->snapshot() : StreamStatistics();
}

void VirtualCamera::unplug() {
    std::shared_ptr<VirtualStream> stream;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        attached_ = false;
        stream = stream_;
    }
    if (stream)
        stream->end(error("was unplugged", ENODEV));
}

std::shared_ptr<VirtualStream> VirtualCamera::stream() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return stream_;
}

} // namespace cameras
} // namespace ostrel
