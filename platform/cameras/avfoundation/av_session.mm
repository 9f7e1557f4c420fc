#include "platform/cameras/avfoundation/av_session.h"

#include "base/autorelease_scope.h"
#include "platform/cameras/avfoundation/guard.h"

namespace ostrel {
namespace cameras {
namespace avfoundation {

namespace {

void releaseObject(void* object) {
    [static_cast<id>(object) release];
}

NSDictionary* videoSettings() {
    return [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithUnsignedInt:(unsigned int)kCVPixelFormatType_32BGRA],
                                     (id)kCVPixelBufferPixelFormatTypeKey, nil];
}

} // namespace

AvSession::AvSession(AVCaptureDevice* device, AVCaptureDeviceInput* input)
    : device_([device retain]), input_([input retain]), session_([[AVCaptureSession alloc] init]),
      output_([[AVCaptureVideoDataOutput alloc] init]) {}

AvSession::~AvSession() {
    const AutoreleaseScope pool;
    if (!receiver_)
        return;
    inbox_->shut();
    [receiver_ stopObserving];
    guarded([this] {
        [session_.get() stopRunning];
        [output_.get() setSampleBufferDelegate:nil queue:nullptr];
        [session_.get() removeOutput:output_.get()];
        [session_.get() removeInput:input_.get()];
    });
    dispatch_async_f(queue_, receiver_, releaseObject); // behind what is on the queue already
    dispatch_release(queue_);
}

// No size is asked for: some systems scale to it, others do not, and some lose the aspect.
std::string AvSession::connect() {
    bool admitted = false;
    const std::string raised = guarded([&] {
        [output_.get() setVideoSettings:videoSettings()];
        [output_.get() setAlwaysDiscardsLateVideoFrames:YES];
        [output_.get() setSampleBufferDelegate:receiver_ queue:queue_];
        [session_.get() beginConfiguration];
        admitted = [session_.get() canAddInput:input_.get()] && [session_.get() canAddOutput:output_.get()];
        if (admitted) {
            [session_.get() addInput:input_.get()];
            [session_.get() addOutput:output_.get()];
        }
        [session_.get() commitConfiguration];
    });
    return !raised.empty() || admitted ? raised : "the system does not let it be captured from";
}

void AvSession::chooseFormat(const std::vector<Offer>& offers) {
    for (const Offer& offer : offers)
        if (guarded([&] { [device_.get() setActiveFormat:offer.format]; }).empty()) {
            choosePace(offer.frameDuration);
            return;
        }
}

// Invalid ones take back what an earlier stream asked for: a format that stays keeps it.
void AvSession::choosePace(const CMTime& frameDuration) {
    guarded([&] { [device_.get() setActiveVideoMinFrameDuration:frameDuration]; });
    guarded([&] { [device_.get() setActiveVideoMaxFrameDuration:frameDuration]; });
}

std::string AvSession::start(const std::vector<Offer>& offers, const std::shared_ptr<Inbox>& inbox) {
    inbox_ = inbox;
    queue_ = dispatch_queue_create("ostrel.camera", DISPATCH_QUEUE_SERIAL);
    receiver_ = [[OstrelFrameReceiver alloc] initWithInbox:inbox];
    [receiver_ observeSession:session_.get() device:device_.get()];
    const std::string refused = connect();
    if (!refused.empty())
        return refused;
    // Locked until the session runs: it would choose a format by its own preset otherwise.
    BOOL locked = NO;
    guarded([&] { locked = [device_.get() lockForConfiguration:NULL]; });
    if (locked)
        chooseFormat(offers);
    std::string why = guarded([this] { [session_.get() startRunning]; });
    if (locked)
        [device_.get() unlockForConfiguration];
    if (why.empty() && ![session_.get() isRunning]) {
        why = inbox->take().why;
        if (why.empty())
            why = "the system gives no reason";
    }
    return why;
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
