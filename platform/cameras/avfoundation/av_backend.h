// A camera of the system's AVFoundation.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_BACKEND_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_BACKEND_H

#include "platform/cameras/avfoundation/av_session.h"
#include "platform/cameras/avfoundation/permission.h"
#include "platform/cameras/streaming_camera.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {
namespace avfoundation {

// The framework's calls come on a queue of its own and leave their news in the inbox; the delivery thread
// takes the newest frame from there.
class AvBackend : public Backend {
public:
    // where: for messages.
    AvBackend(AVCaptureDevice* device, std::string where);

    bool attached() const override;
    Error open() override;
    void close() override;
    Error modes(NativeModes& modes) override;
    Error start(const Request& request, const std::shared_ptr<Outlet>& outlet) override;
    void stop() override;
    bool canServeBetter(const Request& request) override;
    const char* threadName() const override { return "ostrel-avf"; }
    Error next(const StopSignal& stop, Arrival& arrival) override;
    int64_t longestPause() override;

private:
    Error refused() const;
    Error wrong(NSError* error) const;
    Error failed(const std::string& what, const std::string& why) const;
    Error waitForAnswer();
    void tellInterruption();
    void followSize(const Size& size);

    const Owned<AVCaptureDevice> device_;
    const std::string where_;
    Owned<AVCaptureDeviceInput> input_;
    // From start() to stop():
    std::unique_ptr<AvSession> session_;
    std::shared_ptr<Inbox> inbox_;
    std::shared_ptr<Figures> figures_;
    bool unanswered_ = false; // whether the camera may be used
    bool interrupted_ = false;
};

std::shared_ptr<StreamingCamera> makeCamera(AVCaptureDevice* device);

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
