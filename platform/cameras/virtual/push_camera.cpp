#include "platform/cameras/virtual/push_camera.h"

#include "platform/cameras/pixels/bgra.h"
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

class PushedFrame : public VirtualFrame {
public:
    PushedFrame(VirtualStream& stream, pixels::PixelPool::Block memory, const pixels::Picture& picture)
        : VirtualFrame(stream.figures()), memory_(std::move(memory)), picture_(picture),
          pool_(stream.pool()) {}

protected:
    bool draw(uint8_t* bgra, int width, int height, int stride) override {
        return pixels::toBgra(picture_, bgra, width, height, stride, *pool_);
    }

private:
    const pixels::PixelPool::Block memory_;
    const pixels::Picture picture_;
    const std::shared_ptr<pixels::PixelPool> pool_;
};

class PushedYuvFrame : public VirtualFrame {
public:
    PushedYuvFrame(VirtualStream& stream, pixels::PixelPool::Block planes, const YuvLayout& layout)
        : VirtualFrame(stream.figures()), planes_(std::move(planes)), layout_(layout), pool_(stream.pool()) {}

protected:
    bool draw(uint8_t* bgra, int width, int height, int stride) override {
        return drawYuv(layout_, planes_.data(), *pool_, bgra, width, height, stride);
    }

private:
    const pixels::PixelPool::Block planes_;
    const YuvLayout layout_;
    const std::shared_ptr<pixels::PixelPool> pool_;
};

} // namespace

Error PushCamera::begin(const std::shared_ptr<VirtualStream>&) {
    return Error();
}

std::shared_ptr<VirtualStream> PushCamera::listeningStream() const {
    std::shared_ptr<VirtualStream> current = stream();
    // Asked here as well, so that nothing is copied in vain.
    if (!current || current->sinks().empty() ||
        current->figures()->controls().told(VIRTUAL_CAMERA_FAULT_STALL))
        return nullptr;
    return current;
}

bool PushCamera::push(const uint8_t* bgra, int width, int height, int stride) {
    if (!bgra || !pixels::sizeIsSane(width, height) || stride < width * 4)
        return false;
    const std::shared_ptr<VirtualStream> current = listeningStream();
    if (!current)
        return false;
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    pixels::Picture picture;
    picture.layout = pixels::Layout::Bgrx;
    picture.width = width;
    picture.height = height;
    picture.stride = width * 4;
    picture.bytes = rowBytes * static_cast<size_t>(height);
    pixels::PixelPool::Block copy = takeIfThereIs(picture.bytes, *current->pool());
    if (!copy)
        return false;
    for (int y = 0; y < height; ++y)
        std::memcpy(copy.data() + static_cast<size_t>(y) * rowBytes,
                    bgra + static_cast<ptrdiff_t>(y) * stride, rowBytes);
    picture.data = copy.data();
    current->figures()->setGranted("BGRA", width, height, 0);
    return current->deliver(std::make_shared<PushedFrame>(*current, std::move(copy), picture));
}

bool PushCamera::pushI420(const uint8_t* i420, int width, int height) {
    if (!i420 || !pixels::sizeIsSane(width, height))
        return false;
    const std::shared_ptr<VirtualStream> current = listeningStream();
    if (!current)
        return false;
    YuvLayout layout;
    layout.width = width;
    layout.height = height;
    pixels::PixelPool::Block copy = takeIfThereIs(layout.bytes(), *current->pool());
    if (!copy)
        return false;
    std::memcpy(copy.data(), i420, layout.bytes());
    current->figures()->setGranted(layout.code(), width, height, 0);
    return current->deliver(std::make_shared<PushedYuvFrame>(*current, std::move(copy), layout));
}

} // namespace cameras
} // namespace ostrel
