#include "platform/QTKit/captured_picture.h"

#include "platform/CoreVideo/pixel_memory.h"

#include <new>

namespace ostrel {

// Only a frame that may turn out broken needs the last good picture. For any other it goes back to the pool
// first, and is the block that comes out again once nobody reads it: two blocks in turn would take twice the
// room in the processor's cache.
std::shared_ptr<uint8_t> PictureMaker::memoryFor(const cameras::CameraFrame& frame, size_t size) {
    if (!frame.mayBeBroken()) {
        std::lock_guard<std::mutex> lock(mutex_);
        lastGood_.reset();
        lastGoodSize_ = 0;
    }
    return takeShared(pool_, size);
}

// A picture that turns out to be broken shows the last good one instead: a client that polls sees the frame
// before for a little longer, not a hole.
std::shared_ptr<uint8_t> PictureMaker::convert(cameras::CameraFrame& frame, size_t bytesPerRow,
                                               PolledPicture* polled) {
    const size_t size = bytesPerRow * static_cast<size_t>(height_);
    std::shared_ptr<uint8_t> pixels;
    try {
        pixels = memoryFor(frame, size);
        if (!frame.convert(pixels.get(), width_, height_, static_cast<int>(bytesPerRow)))
            pixels.reset();
    } catch (const std::bad_alloc&) {
        pixels.reset();
    }
    if (pixels && polled)
        polled->set(pixels, static_cast<int>(bytesPerRow));
    std::lock_guard<std::mutex> lock(mutex_);
    if (pixels) {
        lastGood_ = pixels;
        lastGoodSize_ = size;
    } else if (lastGoodSize_ == size) {
        pixels = lastGood_;
    }
    return pixels;
}

} // namespace ostrel
