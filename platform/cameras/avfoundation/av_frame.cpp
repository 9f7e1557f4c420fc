#include "platform/cameras/avfoundation/av_frame.h"

#include "base/monotonic_clock.h"
#include "platform/cameras/pixels/convert.h"

#include <climits>
#include <cstring>

namespace ostrel {
namespace cameras {
namespace avfoundation {

namespace {

// The framework has few buffers, and stops delivering while its clients hold them all. A capture holds one or
// two; what a client keeps beyond that is copied.
const int MOST_BUFFERS_HELD = 4;

const size_t BYTES_PER_PIXEL = 4;

// The bytes of a locked buffer; no data when there are none to read. Rows may be padded.
pixels::Picture pictureIn(CVPixelBufferRef buffer, const Size& size) {
    pixels::Picture picture;
    picture.layout = pixels::Layout::Bgrx;
    picture.width = size.width;
    picture.height = size.height;
    const size_t stride = CVPixelBufferGetBytesPerRow(buffer);
    const size_t row = static_cast<size_t>(size.width) * BYTES_PER_PIXEL;
    if (stride < row || stride > INT_MAX)
        return picture;
    // Nobody promises that the last row is padded as well.
    pixels::setBlock(picture, static_cast<const uint8_t*>(CVPixelBufferGetBaseAddress(buffer)),
                     stride * static_cast<size_t>(size.height - 1) + row, static_cast<int>(stride));
    return picture;
}

class Reading {
public:
    explicit Reading(CVPixelBufferRef buffer)
        : buffer_(buffer),
          locked_(CVPixelBufferLockBaseAddress(buffer, kCVPixelBufferLock_ReadOnly) == kCVReturnSuccess) {}
    ~Reading() {
        if (locked_)
            CVPixelBufferUnlockBaseAddress(buffer_, kCVPixelBufferLock_ReadOnly);
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    explicit operator bool() const { return locked_; }

private:
    const CVPixelBufferRef buffer_;
    const bool locked_;
};

// 0 x 0 for what cannot be a picture.
Size sizeOf(CVPixelBufferRef buffer) {
    const size_t width = CVPixelBufferGetWidth(buffer);
    const size_t height = CVPixelBufferGetHeight(buffer);
    if (width > INT_MAX || height > INT_MAX)
        return Size();
    const Size size(static_cast<int>(width), static_cast<int>(height));
    return pixels::sizeIsSane(size.width, size.height) ? size : Size();
}

} // namespace

std::shared_ptr<AvFrame> AvFrame::of(CVPixelBufferRef buffer, const std::shared_ptr<FrameOrigin>& origin) {
    FrameFacts facts;
    facts.time = monotonicNanoseconds();
    facts.sequence = origin->arrived.fetch_add(1, std::memory_order_relaxed);
    facts.format = "BGRA";
    facts.size = sizeOf(buffer);
    if (facts.size == Size() || CVPixelBufferGetPixelFormatType(buffer) != kCVPixelFormatType_32BGRA) {
        origin->figures->drop(Drop::UnknownBuffer);
        return nullptr;
    }
    const std::shared_ptr<AvFrame> frame(new AvFrame(origin, std::move(facts)));
    if (origin->buffersHeld.fetch_add(1) < MOST_BUFFERS_HELD) {
        frame->buffer_ = CVBufferRetain(buffer);
        return frame;
    }
    origin->buffersHeld.fetch_sub(1);
    if (frame->copy(buffer))
        return frame;
    origin->figures->drop(Drop::Damaged);
    return nullptr;
}

AvFrame::~AvFrame() {
    if (!buffer_)
        return;
    CVBufferRelease(buffer_);
    origin_->buffersHeld.fetch_sub(1);
}

bool AvFrame::copy(CVPixelBufferRef buffer) {
    const Reading reading(buffer);
    const pixels::Picture picture = reading ? pictureIn(buffer, facts_.size) : pixels::Picture();
    const uint8_t* const from = picture.planes[0].data;
    if (!from)
        return false;
    const size_t row = static_cast<size_t>(facts_.size.width) * BYTES_PER_PIXEL;
    pixels::PixelPool::Block block = origin_->pool->take(row * static_cast<size_t>(facts_.size.height));
    for (int y = 0; y < facts_.size.height; ++y)
        std::memcpy(block.data() + static_cast<size_t>(y) * row,
                    from + static_cast<ptrdiff_t>(y) * picture.planes[0].stride, row);
    copy_ = std::move(block);
    return true;
}

bool AvFrame::show(const PictureReader& reader) {
    if (!buffer_) {
        pixels::Picture picture;
        picture.layout = pixels::Layout::Bgrx;
        picture.width = facts_.size.width;
        picture.height = facts_.size.height;
        const size_t row = static_cast<size_t>(picture.width) * BYTES_PER_PIXEL;
        pixels::setBlock(picture, copy_.data(), row * static_cast<size_t>(picture.height),
                         static_cast<int>(row));
        reader(picture);
        return true;
    }
    const Reading reading(buffer_);
    const pixels::Picture picture = reading ? pictureIn(buffer_, facts_.size) : pixels::Picture();
    if (picture.planes[0].data)
        reader(picture);
    return picture.planes[0].data != nullptr;
}

bool AvFrame::convert(const pixels::Output& to) {
    pixels::Fault fault = pixels::Fault::Empty;
    show([&](const pixels::Picture& picture) { fault = pixels::convert(picture, to, *origin_->pool); });
    const bool whole = fault == pixels::Fault::None;
    if (!whole)
        origin_->figures->drop(fault);
    else if (!taken_.exchange(true, std::memory_order_relaxed))
        origin_->figures->countTaken();
    return whole;
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
