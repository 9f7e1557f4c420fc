#include "platform/QTKit/slot_frame.h"

#include <cstring>

namespace ostrel {

using cameras::pixels::Output;
using cameras::pixels::OutputFormat;

namespace {

void copyRows(const uint8_t* from, int stride, const Output& to) {
    const size_t bytes =
        static_cast<size_t>(to.width) * static_cast<size_t>(cameras::pixels::bytesPerPixel(to.format));
    for (int y = 0; y < to.height; ++y)
        std::memcpy(to.row(y), from + static_cast<ptrdiff_t>(y) * stride, bytes);
}

} // namespace

bool SlotFrame::convert(const Output& to) {
    if (isBroken())
        return false;
    if (frame_->convert(to))
        return true;
    broken_.store(true, std::memory_order_relaxed);
    return false;
}

bool SlotFrame::copyPolled(const Output& to) const {
    if (to.format != OutputFormat::Bgra)
        return false;
    int stride = 0;
    const std::shared_ptr<uint8_t> picture = polled_->get(stride);
    if (picture)
        copyRows(picture.get(), stride, to);
    return picture != nullptr;
}

bool SlotFrame::write(const Output& to, bool shared) {
    if (copyPolled(to))
        return true;
    if (!shared)
        return convert(to);
    const int stride = to.width * cameras::pixels::bytesPerPixel(to.format);
    cameras::pixels::PixelPool::Block& made = made_[static_cast<size_t>(to.format)];
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!made) {
            cameras::pixels::PixelPool::Block fresh =
                pool_->take(static_cast<size_t>(stride) * static_cast<size_t>(to.height));
            if (!convert({to.format, fresh.data(), to.width, to.height, stride}))
                return false;
            made = std::move(fresh);
        }
    }
    copyRows(made.data(), stride, to);
    return true;
}

} // namespace ostrel
