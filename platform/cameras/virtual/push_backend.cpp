#include "platform/cameras/virtual/push_backend.h"

#include "platform/cameras/virtual/virtual_frame.h"
#include "platform/cameras/virtual/yuv_picture.h"

#include <cstring>
#include <new>

namespace ostrel {
namespace cameras {

namespace {

// Empty when there is no memory.
pixels::PixelPool::Block takeIfThereIs(size_t bytes, pixels::PixelPool& pool) {
    try {
        return pool.take(bytes);
    } catch (const std::bad_alloc&) {
        return pixels::PixelPool::Block();
    }
}

// What comes next may come at any time.
Mode modeOf(const char* format, int width, int height) {
    Mode mode;
    mode.format = format;
    mode.size.width = width;
    mode.size.height = height;
    return mode;
}

class PushedFrame : public VirtualFrame {
public:
    PushedFrame(const std::shared_ptr<Figures>& figures, uint32_t sequence, const Mode& mode,
                std::shared_ptr<pixels::PixelPool> pool, pixels::PixelPool::Block memory,
                const pixels::Picture& picture)
        : VirtualFrame(figures, sequence, mode), pool_(std::move(pool)), memory_(std::move(memory)),
          picture_(picture) {}

    bool show(const PictureReader& reader) override {
        reader(picture_);
        return true;
    }

protected:
    bool draw(const pixels::Output& to) override { return drawShown(to, *pool_); }

private:
    const std::shared_ptr<pixels::PixelPool> pool_;
    const pixels::PixelPool::Block memory_;
    const pixels::Picture picture_;
};

} // namespace

Error PushBackend::start(const Request&, const std::shared_ptr<Outlet>& outlet) {
    const auto pool = std::make_shared<pixels::PixelPool>();
    std::lock_guard<std::mutex> lock(mutex_);
    listener_ = {outlet, pool};
    pushed_ = 0;
    return Error();
}

void PushBackend::stop() {
    Listener gone; // let go of outside the lock
    std::lock_guard<std::mutex> lock(mutex_);
    std::swap(gone, listener_);
}

PushBackend::Listener PushBackend::listener() {
    std::lock_guard<std::mutex> lock(mutex_);
    return listener_;
}

bool PushBackend::push(const uint8_t* bgra, int width, int height, int stride) {
    if (!bgra || !pixels::sizeIsSane(width, height) || stride < width * 4)
        return false;
    const Listener current = listener();
    if (!current.outlet)
        return false;
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    pixels::Picture picture;
    picture.layout = pixels::Layout::Bgrx;
    picture.width = width;
    picture.height = height;
    const size_t bytes = rowBytes * static_cast<size_t>(height);
    pixels::PixelPool::Block copy = takeIfThereIs(bytes, *current.pool);
    if (!copy)
        return false;
    for (int y = 0; y < height; ++y)
        std::memcpy(copy.data() + static_cast<size_t>(y) * rowBytes,
                    bgra + static_cast<ptrdiff_t>(y) * stride, rowBytes);
    pixels::setBlock(picture, copy.data(), bytes, width * 4);
    return deliver(current, modeOf("BGRA", width, height), std::move(copy), picture);
}

bool PushBackend::pushI420(const uint8_t* i420, int width, int height) {
    if (!i420 || !pixels::sizeIsSane(width, height))
        return false;
    const Listener current = listener();
    if (!current.outlet)
        return false;
    YuvLayout layout;
    layout.width = width;
    layout.height = height;
    pixels::PixelPool::Block copy = takeIfThereIs(layout.bytes(), *current.pool);
    if (!copy)
        return false;
    std::memcpy(copy.data(), i420, layout.bytes());
    const pixels::Picture picture = yuvPicture(layout, copy.data());
    return deliver(current, modeOf(layout.code(), width, height), std::move(copy), picture);
}

bool PushBackend::deliver(const Listener& to, const Mode& mode, pixels::PixelPool::Block memory,
                          const pixels::Picture& picture) {
    const std::shared_ptr<Figures>& figures = to.outlet->figures();
    figures->setGranted(mode);
    return to.outlet->deliver(std::make_shared<PushedFrame>(figures, pushed_.fetch_add(1), mode, to.pool,
                                                            std::move(memory), picture));
}

} // namespace cameras
} // namespace ostrel
