// A frame that was delivered, and the pictures that were made of it.
#ifndef OSTREL_PLATFORM_QTKIT_SLOT_FRAME_H
#define OSTREL_PLATFORM_QTKIT_SLOT_FRAME_H

#include "platform/cameras/camera.h"
#include "platform/cameras/pixels/pixel_pool.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace ostrel {

// The picture that was made for who polls, for as long as that client keeps it. Thread-safe.
class PolledPicture {
public:
    void set(const std::shared_ptr<uint8_t>& bgra, int stride) {
        std::lock_guard<std::mutex> lock(mutex_);
        bgra_ = bgra;
        stride_ = stride;
    }
    std::shared_ptr<uint8_t> get(int& stride) const {
        std::lock_guard<std::mutex> lock(mutex_);
        stride = stride_;
        return bgra_.lock();
    }

private:
    mutable std::mutex mutex_;
    std::weak_ptr<uint8_t> bgra_;
    int stride_ = 0;
};

// Thread-safe. Holds the camera's frame.
class SlotFrame {
public:
    // columns, rows: of the pictures that are asked for, in pixels.
    SlotFrame(std::shared_ptr<cameras::CameraFrame> frame, int columns, int rows,
              std::shared_ptr<cameras::pixels::PixelPool> pool)
        : width(columns), height(rows), frame_(std::move(frame)), pool_(std::move(pool)) {}

    const int width, height;
    // Set as it comes into its slot, before anybody sees it.
    uint64_t serial = 0;
    uint32_t number = 0;

    cameras::CameraFrame& camera() const { return *frame_; }
    const std::shared_ptr<PolledPicture>& polled() const { return polled_; }
    // Some picture of it could not be made.
    bool isBroken() const { return broken_.load(std::memory_order_relaxed); }

    // Writes the picture; false when it is broken. Of several who ask (`shared`) the first makes the picture,
    // and the others wait for it and copy. Throws std::bad_alloc.
    bool write(const cameras::pixels::Output& to, bool shared);

private:
    bool convert(const cameras::pixels::Output& to);
    bool copyPolled(const cameras::pixels::Output& to) const;

    const std::shared_ptr<cameras::CameraFrame> frame_;
    const std::shared_ptr<PolledPicture> polled_ = std::make_shared<PolledPicture>();
    const std::shared_ptr<cameras::pixels::PixelPool> pool_;
    std::atomic<bool> broken_{false};
    std::mutex mutex_; // of the rest; held while a picture is made that others want as well
    std::array<cameras::pixels::PixelPool::Block, 3> made_; // by format, without padding
};

} // namespace ostrel

#endif
