// From the camera's frames to the delegate's pixel buffers.
#ifndef OSTREL_PLATFORM_QTKIT_DELIVERY_H
#define OSTREL_PLATFORM_QTKIT_DELIVERY_H

#include "platform/QTKit/captured_picture.h"
#include "platform/QTKit/frame_slot.h"
#include "platform/QTKit/late_calls.h"
#include "platform/QTKit/open_camera.h"
#include "platform/QTKit/output_state.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace ostrel {

// One camera delivering to one output. The camera is started as soon as the session is complete, so that its
// errors can be told when the output is added; frames are held back until the session runs. A delivery that
// was stopped stays so, also when the stop overtakes the start. Thread-safe.
class Delivery : public cameras::FrameSink, public std::enable_shared_from_this<Delivery> {
public:
    // The output is not retained: the session keeps it for as long as the delivery.
    Delivery(std::shared_ptr<OpenCamera> camera, QTCaptureDecompressedVideoOutput* output)
        : output_(output), settings_(stateOf(output)), camera_(std::move(camera)) {}

    cameras::Error start();
    // Lets frames through to the delegate, unless it was stopped.
    void letThrough() {
        int held = HELD_BACK;
        state_.compare_exchange_strong(held, RUNNING);
    }
    // As QTCaptureSession's stopRunning. Lets go of the camera, which a thread that is about to deliver the
    // next frame would otherwise keep open for another moment.
    void stop();

    void frameArrived(const std::shared_ptr<cameras::CameraFrame>& frame) override;
    bool listens() const override { return state_.load() == RUNNING; }
    void streamEnded(const cameras::Error& why) override;

private:
    enum State { HELD_BACK, RUNNING, STOPPED };

    std::shared_ptr<OpenCamera> camera();
    bool tooSoon();
    // Whether another delivery of this process runs on the same camera: two shares beside the camera's own.
    bool sharesCamera() const { return share_.use_count() > 2; }
    void callDelegate(const std::shared_ptr<cameras::CameraFrame>& frame);

    QTCaptureDecompressedVideoOutput* const output_;
    const QTCaptureOutputState& settings_; // the output's
    std::atomic<int> state_{HELD_BACK};
    std::mutex mutex_;
    std::shared_ptr<OpenCamera> camera_; // null once it was stopped
    std::shared_ptr<FrameSlot> slot_;
    std::shared_ptr<const int> share_; // of the camera; null once it was stopped
    std::shared_ptr<PictureMaker> pictures_;
    FrameRequest request_;
    std::shared_ptr<cameras::pixels::PixelPool> pool_; // for who waits in company
    LateCalls lateCalls_;
    // Belongs to the delivery thread while the camera runs.
    double lastTime_ = -1; // seconds of the monotonic clock
};

} // namespace ostrel

#endif
