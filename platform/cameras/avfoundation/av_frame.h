// A frame in one of the framework's buffers.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_FRAME_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_AV_FRAME_H

#include "platform/cameras/camera.h"
#include "platform/cameras/pixels/pixel_pool.h"

#include <CoreVideo/CoreVideo.h>

#include <atomic>
#include <memory>

namespace ostrel {
namespace cameras {
namespace avfoundation {

// What the frames of one stream have in common. Frames may outlive the stream and keep it.
struct FrameOrigin {
    explicit FrameOrigin(std::shared_ptr<Figures> all) : figures(std::move(all)) {}

    const std::shared_ptr<Figures> figures;
    const std::shared_ptr<pixels::PixelPool> pool = std::make_shared<pixels::PixelPool>();
    std::atomic<int> buffersHeld{0};
    std::atomic<uint32_t> arrived{0};
};

// Thread-safe.
class AvFrame : public CameraFrame {
public:
    // It arrives now. Null, with the reason counted, for a buffer that is no picture of B, G, R, A. Throws
    // std::bad_alloc.
    static std::shared_ptr<AvFrame> of(CVPixelBufferRef buffer, const std::shared_ptr<FrameOrigin>& origin);
    ~AvFrame() override;

    bool convert(const pixels::Output& to) override;
    bool show(const PictureReader& reader) override;
    FrameFacts facts() const override { return facts_; }

private:
    AvFrame(std::shared_ptr<FrameOrigin> origin, FrameFacts facts)
        : origin_(std::move(origin)), facts_(std::move(facts)) {}
    bool copy(CVPixelBufferRef buffer);

    const std::shared_ptr<FrameOrigin> origin_;
    const FrameFacts facts_;
    CVPixelBufferRef buffer_ = nullptr; // retained; null for a copy
    pixels::PixelPool::Block copy_;
    std::atomic<bool> taken_{false};
};

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
