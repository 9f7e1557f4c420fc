#include "platform/QTKit/delivery.h"

#include "base/autorelease_scope.h"
#include "base/limits.h"
#include "base/monotonic_clock.h"

namespace ostrel {

namespace {

cameras::Error checkRequest(const FrameRequest& request) {
    if (request.format != kCVPixelFormatType_32BGRA)
        return cameras::Error("only 32-bit BGRA frames can be delivered");
    const uint32_t most = LARGEST_SIDE;
    if (request.width < 1 || request.width > most || request.height < 1 || request.height > most)
        return cameras::Error(
            "frames of " + std::to_string(request.width) + " x " + std::to_string(request.height) +
            " pixels cannot be delivered: each side may be from 1 to " + std::to_string(most));
    return cameras::Error();
}

} // namespace

cameras::Error Delivery::start() {
    request_ = requestOf(output_);
    const cameras::Error wrong = checkRequest(request_);
    if (wrong)
        return wrong;
    const int width = static_cast<int>(request_.width);
    const int height = static_cast<int>(request_.height);
    const std::shared_ptr<OpenCamera> opened = camera();
    if (!opened)
        return cameras::Error();
    pictures_ = std::make_shared<PictureMaker>(width, height);
    pool_ = std::make_shared<cameras::pixels::PixelPool>();
    slot_ = FrameSlot::of(settings_.delegate.load(std::memory_order_acquire));
    if (!slot_->admit(shared_from_this())) {
        state_.store(STOPPED);
        return cameras::Error();
    }
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (camera_) // else it was stopped meanwhile, which gave the share back
            share_ = opened->share();
    }
    const cameras::Error refused = (*opened)->start(width, height, shared_from_this());
    // A stop that came first found nothing to stop.
    if (state_.load() == STOPPED)
        (*opened)->stop(shared_from_this());
    return refused;
}

void Delivery::stop() {
    state_.store(STOPPED);
    const std::shared_ptr<OpenCamera> opened = camera();
    if (!opened)
        return; // somebody has stopped it already, and waited
    (*opened)->stop(shared_from_this());
    lateCalls_.stop();
    std::shared_ptr<OpenCamera> mine; // let go of outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    mine.swap(camera_);
    share_.reset();
}

std::shared_ptr<OpenCamera> Delivery::camera() {
    std::lock_guard<std::mutex> lock(mutex_);
    return camera_;
}

bool Delivery::tooSoon() {
    const double interval = settings_.minimumInterval.load(std::memory_order_relaxed);
    if (interval <= 0)
        return false;
    const double now = static_cast<double>(monotonicNanoseconds()) * 1e-9;
    if (lastTime_ >= 0 && now - lastTime_ < interval)
        return true;
    lastTime_ = now;
    return false;
}

// A client that is making a picture holds a lock that its delegate needs as well. The camera's thread does
// not wait for that: others capture from the camera too.
void Delivery::frameArrived(const std::shared_ptr<cameras::CameraFrame>& frame) {
    if (state_.load() != RUNNING || tooSoon())
        return;
    if (lateCalls_.busy() || (sharesCamera() && pictures_->isBeingRead())) {
        const auto mine = shared_from_this();
        if (lateCalls_.post(frame, [mine](const LateCalls::Frame& late) { mine->callDelegate(late); }))
            return;
    }
    callDelegate(frame);
}

void Delivery::callDelegate(const std::shared_ptr<cameras::CameraFrame>& frame) {
    id delegate = settings_.delegate.load(std::memory_order_acquire);
    if (!delegate || state_.load() != RUNNING)
        return;
    const auto slotted = std::make_shared<SlotFrame>(frame, static_cast<int>(request_.width),
                                                     static_cast<int>(request_.height), pool_);
    if (frame->hasPicture()) {
        const AutoreleaseScope pool;
        const CVPixelBufferRef buffer = pictures_->makeBuffer(frame, slotted->polled());
        if (!buffer)
            return; // a broken one, and none before it that could be shown
        [delegate captureOutput:output_ didOutputVideoFrame:buffer withSampleBuffer:nil fromConnection:nil];
        CVBufferRelease(buffer);
    }
    slot_->put(slotted);
}

// Who polls sees it in that no new frame comes, and in the listing; who waits is told.
void Delivery::streamEnded(const cameras::Error& why) {
    slot_->ended(this, why.text);
}

} // namespace ostrel
