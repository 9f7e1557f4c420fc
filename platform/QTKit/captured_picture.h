// The picture of one captured frame: made when somebody wants it where the pixel buffers are our own
// (late_picture.cpp), else before the delegate is called (eager_picture.cpp).
#ifndef OSTREL_PLATFORM_QTKIT_CAPTURED_PICTURE_H
#define OSTREL_PLATFORM_QTKIT_CAPTURED_PICTURE_H

#include "platform/cameras/camera.h"
#include "platform/QTKit/slot_frame.h"

#include <CoreVideo/CoreVideo.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace ostrel {

// What the pictures of one capture have in common: their size, their memory, and the last good one.
// Thread-safe. Pictures may outlive the capture and keep this alive.
class PictureMaker : public std::enable_shared_from_this<PictureMaker> {
public:
    PictureMaker(int width, int height) : width_(width), height_(height) {}

    // A buffer with one reference, which belongs to the caller; null when there is no picture to show. Throws
    // std::bad_alloc. polled: told once the picture has been made; may be null.
    CVPixelBufferRef makeBuffer(const std::shared_ptr<cameras::CameraFrame>& frame,
                                const std::shared_ptr<PolledPicture>& polled = nullptr);
    // Whether somebody has one of the buffers locked and may have it for long: its picture is being made.
    bool isBeingRead() const;

private:
    friend class CapturedPicture;
    // The picture, or the last good one; null when there is none.
    std::shared_ptr<uint8_t> convert(cameras::CameraFrame& frame, size_t bytesPerRow, PolledPicture* polled);
    std::shared_ptr<uint8_t> memoryFor(const cameras::CameraFrame& frame, size_t size);

    const int width_;  // pixels
    const int height_; // pixels
    const std::shared_ptr<std::atomic<int>> readers_ = std::make_shared<std::atomic<int>>(0);
    cameras::pixels::PixelPool pool_;
    std::mutex mutex_; // of the rest
    std::shared_ptr<uint8_t> lastGood_;
    size_t lastGoodSize_ = 0;
};

} // namespace ostrel

#endif
