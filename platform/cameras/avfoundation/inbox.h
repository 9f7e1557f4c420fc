// What the framework has to tell about a stream, until the delivery thread looks.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_INBOX_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_INBOX_H

#include "base/wake_descriptor.h"
#include "platform/cameras/avfoundation/av_frame.h"

#include <memory>
#include <mutex>

namespace ostrel {
namespace cameras {
namespace avfoundation {

// Thread-safe. Shut at the end of a stream: the framework may call its delegate some time longer, and what it
// brings then goes nowhere.
class Inbox {
public:
    struct News {
        std::shared_ptr<CameraFrame> frame; // the newest, may be null
        bool signOfLife = false;            // something came, be it broken
        bool broken = false;                // the framework has given up
        std::string why;                    // in its own words
    };

    explicit Inbox(const std::shared_ptr<Figures>& figures)
        : origin_(std::make_shared<FrameOrigin>(figures)) {}

    bool valid() const { return wake_.valid(); }
    // Readable while there is news.
    int descriptor() const { return wake_.descriptor(); }

    // Null: a frame that came without a picture.
    void put(CVPixelBufferRef buffer) noexcept;
    void fail(const std::string& why);
    void setInterrupted(bool interrupted);
    // Has whoever waits look around.
    void wake() { wake_.set(); }
    void shut();

    News take();
    // Between the system's word that another use of the camera goes first, and that this has ended.
    bool isInterrupted() const;

private:
    void put(const std::shared_ptr<AvFrame>& frame);

    const std::shared_ptr<FrameOrigin> origin_;
    const WakeDescriptor wake_;
    mutable std::mutex mutex_; // of the rest
    News news_;
    bool interrupted_ = false;
    bool shut_ = false;
};

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
