// A frame that reads a driver's buffer in place.
#ifndef OSTREL_PLATFORM_CAMERAS_BUFFER_FRAME_H
#define OSTREL_PLATFORM_CAMERAS_BUFFER_FRAME_H

#include "platform/cameras/camera.h"
#include "platform/cameras/figures.h"
#include "platform/cameras/pixels/picture.h"
#include "platform/cameras/pixels/pixel_pool.h"

#include <atomic>
#include <memory>
#include <shared_mutex>

namespace ostrel {
namespace cameras {

class BufferFrame;

// Whose buffers frames read. Thread-safe.
class BufferOwner {
public:
    virtual ~BufferOwner() = default;
    // The frame reads its buffer no more. Called by its destructor.
    virtual void dropped(BufferFrame& frame, unsigned index) = 0;
};

// Thread-safe.
class BufferFrame : public CameraFrame {
public:
    // The picture's bytes belong to buffer `index` of the owner, which gets it back when the frame is
    // dropped.
    BufferFrame(const std::shared_ptr<BufferOwner>& owner, unsigned index, const pixels::Picture& picture,
                FrameFacts facts, const std::shared_ptr<pixels::PixelPool>& pool,
                const std::shared_ptr<Figures>& figures);
    ~BufferFrame() override;

    bool convert(const pixels::Output& to) override;
    FrameFacts facts() const override { return facts_; }
    bool show(const PictureReader& reader) override;
    bool hasPicture() const override { return layout_ != pixels::Layout::Opaque; }
    bool mayBeBroken() const override { return layout_ == pixels::Layout::Jpeg; }

    // Copies the picture, so that the buffer is not read any more. Waits for conversions in progress.
    void detach();

private:
    const std::shared_ptr<BufferOwner> owner_;
    const unsigned index_;
    const pixels::Layout layout_;
    const FrameFacts facts_;
    const std::shared_ptr<pixels::PixelPool> pool_;
    const std::shared_ptr<Figures> figures_;
    std::atomic<bool> taken_{false};
    std::shared_mutex mutex_; // shared by those who read the picture, alone for the one who moves it
    pixels::Picture picture_;
    pixels::PixelPool::Block own_;
    bool readable_ = true;
};

} // namespace cameras
} // namespace ostrel

#endif
