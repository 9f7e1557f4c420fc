// One run of the framework's capture session.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_SESSION_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_SESSION_H

#include "platform/cameras/avfoundation/formats.h"
#include "platform/cameras/avfoundation/inbox.h"
#include "platform/cameras/avfoundation/owned.h"
#include "platform/cameras/avfoundation/receiver.h"

#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace avfoundation {

// Bound to one thread at a time.
class AvSession {
public:
    // The input must belong to no other session as long as this one lives.
    AvSession(AVCaptureDevice* device, AVCaptureDeviceInput* input);
    // Stops. Calls of the framework that are on their way end in the inbox, which is shut.
    ~AvSession();
    AvSession(const AvSession&) = delete;
    AvSession& operator=(const AvSession&) = delete;

    // Once. Returns when the session runs, which may take seconds. The offers are tried in their order; where
    // the device takes none of them it runs as it is. Not empty: why it does not run.
    std::string start(const std::vector<Offer>& offers, const std::shared_ptr<Inbox>& inbox);

private:
    std::string connect();
    void chooseFormat(const std::vector<Offer>& offers);
    void choosePace(const CMTime& frameDuration);

    const Owned<AVCaptureDevice> device_;
    const Owned<AVCaptureDeviceInput> input_;
    const Owned<AVCaptureSession> session_;
    const Owned<AVCaptureVideoDataOutput> output_;
    OstrelFrameReceiver* receiver_ = nil; // retained
    dispatch_queue_t queue_ = nullptr;    // retained
    std::shared_ptr<Inbox> inbox_;
};

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
