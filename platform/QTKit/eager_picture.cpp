// The system's pixel buffers cannot be told to make their picture when they are locked. The frame is copied
// even where its size fits: its memory is one of the few blocks that the camera has, its rows may be padded,
// and nobody vouches for its fourth byte.
#include "platform/QTKit/captured_picture.h"

#include <new>

namespace ostrel {

namespace {

void letGo(void* held, const void*) {
    delete static_cast<std::shared_ptr<uint8_t>*>(held);
}

} // namespace

CVPixelBufferRef PictureMaker::makeBuffer(const std::shared_ptr<cameras::CameraFrame>& frame,
                                          const std::shared_ptr<PolledPicture>& polled) {
    const size_t bytesPerRow = static_cast<size_t>(frame->rowBytes(width_));
    auto held = std::make_unique<std::shared_ptr<uint8_t>>(convert(*frame, bytesPerRow, polled.get()));
    if (!*held)
        return nullptr;
    CVPixelBufferRef buffer = nullptr;
    if (CVPixelBufferCreateWithBytes(kCFAllocatorDefault, static_cast<size_t>(width_),
                                     static_cast<size_t>(height_), kCVPixelFormatType_32BGRA, held->get(),
                                     bytesPerRow, letGo, held.get(), nullptr, &buffer) != kCVReturnSuccess)
        throw std::bad_alloc();
    held.release(); // the buffer's own
    return buffer;
}

// Only for as long as it takes to copy a picture.
bool PictureMaker::isBeingRead() const {
    return false;
}

} // namespace ostrel
