// What the cameras without hardware have in common.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_CAMERA_BASE_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_CAMERA_BASE_H

#include "platform/cameras/virtual/controls.h"
#include "platform/cameras/virtual/stream.h"

#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {

// One plugging of a virtual camera: attached again, it is another object. Thread-safe.
//   plugged  -> open() ->  opened  -> start() of the first sink ->  streaming
//   streaming -> stop() of the last sink -> opened -> close() -> plugged
//   any state -> unplug(): a running stream ends, open() and start() are refused from then on
class VirtualCamera : public Camera {
public:
    explicit VirtualCamera(std::shared_ptr<VirtualControls> controls);
    ~VirtualCamera() override;

    std::string identifier() const override { return controls_->identifier; }
    std::string displayName() const override { return controls_->displayName; }
    Error open() override;
    void close() override;
    Error admitInput() override;
    Error start(int width, int height, const std::shared_ptr<FrameSink>& sink) override;
    void stop(const std::shared_ptr<FrameSink>& sink) override;
    bool attached() const override;
    StreamStatistics statistics() const override;

    // Returns when every sink was told that the stream has ended; from inside a sink's call, at once.
    void unplug();

protected:
    // Called with the camera's lock held: no call of a sink may come from here.
    virtual Error prepare() { return Error(); } // at open()
    virtual void release() {}                   // at close()
    // At the start of a stream: sets what is granted, starts the thread if there is one.
    virtual Error begin(const std::shared_ptr<VirtualStream>& stream) = 0;

    // The running stream, or null.
    std::shared_ptr<VirtualStream> stream() const;

private:
    Error error(const char* what, int number = -1) const;

    const std::shared_ptr<VirtualControls> controls_;
    mutable std::mutex mutex_; // never held while a sink is called or a thread is waited for
    bool open_ = false;
    bool attached_ = true;
    std::shared_ptr<VirtualStream> stream_;
    std::shared_ptr<StreamFigures> figures_; // of the newest stream, also after its end
};

} // namespace cameras
} // namespace ostrel

#endif
