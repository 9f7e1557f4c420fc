// From the camera's frames to the delegate's pixel buffers.
#ifndef OSTREL_PLATFORM_QTKIT_DELIVERY_H
#define OSTREL_PLATFORM_QTKIT_DELIVERY_H

#include "platform/QTKit/captured_picture.h"
#include "platform/QTKit/open_camera.h"
#include "platform/QTKit/output_state.h"

#include <atomic>
#include <memory>

namespace ostrel {

// One camera delivering to one output. The camera is started as soon as the session is complete, so that its
// errors can be told when the output is added; frames are held back until the session runs. Thread-safe.
class Delivery : public cameras::FrameSink, public std::enable_shared_from_this<Delivery> {
public:
    // The output is not retained: the session keeps it for as long as the delivery.
    Delivery(std::shared_ptr<OpenCamera> camera, QTCaptureDecompressedVideoOutput* output)
        : camera_(std::move(camera)), output_(output) {}

    cameras::Error start();
    // Lets frames through to the delegate, or holds them back.
    void setRunning(bool running) { running_.store(running, std::memory_order_release); }
    // As QTCaptureSession's stopRunning; what was held for the frames is given back.
    void stop();

    void frameArrived(const std::shared_ptr<cameras::CameraFrame>& frame) override;
    void streamEnded(const cameras::Error& why) override;

private:
    bool tooSoon();

    const std::shared_ptr<OpenCamera> camera_;
    QTCaptureDecompressedVideoOutput* const output_;
    std::atomic<bool> running_{false};
    // Belong to the delivery thread while the camera runs.
    std::shared_ptr<PictureMaker> pictures_;
    double lastTime_ = -1; // seconds of the monotonic clock
};

} // namespace ostrel

#endif
