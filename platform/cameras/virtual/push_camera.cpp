#include "platform/cameras/virtual/push_camera.h"

#include "platform/cameras/virtual/scaling.h"
#include "platform/cameras/virtual/yuv_picture.h"

#include <cstring>

namespace ostrel {
namespace cameras {

namespace {

// Neither a row nor a picture's offset exceeds what libyuv takes.
const int GREATEST_SIDE = 16384;

bool isSize(int width, int height) {
    return width >= 1 && width <= GREATEST_SIDE && height >= 1 && height <= GREATEST_SIDE;
}

class PushedFrame : public VirtualFrame {
public:
    PushedFrame(std::shared_ptr<StreamFigures> figures, PixelPool::Block picture, int width, int height)
        : VirtualFrame(std::move(figures)), picture_(std::move(picture)), width_(width), height_(height) {}

protected:
    bool draw(uint8_t* bgra, int width, int height, int stride) override {
        return scalePicture({picture_.data(), width_, height_, width_ * 4}, {bgra, width, height, stride});
    }

private:
    const PixelPool::Block picture_;
    const int width_;
    const int height_;
};

class PushedYuvFrame : public VirtualFrame {
public:
    PushedYuvFrame(std::shared_ptr<StreamFigures> figures, PixelPool::Block picture, const YuvLayout& layout,
                   std::shared_ptr<PixelPool> scratch)
        : VirtualFrame(std::move(figures)), picture_(std::move(picture)), layout_(layout),
          scratch_(std::move(scratch)) {}

protected:
    bool draw(uint8_t* bgra, int width, int height, int stride) override {
        return drawYuv(layout_, picture_.data(), scratch_, bgra, width, height, stride);
    }

private:
    const PixelPool::Block picture_;
    const YuvLayout layout_;
    const std::shared_ptr<PixelPool> scratch_;
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
    if (!bgra || !isSize(width, height) || stride < width * 4)
        return false;
    const std::shared_ptr<VirtualStream> current = listeningStream();
    if (!current)
        return false;
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    PixelPool::Block copy = PixelPool::take(current->pixels(), rowBytes * static_cast<size_t>(height));
    if (!copy)
        return false;
    for (int y = 0; y < height; ++y)
        std::memcpy(copy.data() + static_cast<size_t>(y) * rowBytes,
                    bgra + static_cast<ptrdiff_t>(y) * stride, rowBytes);
    current->figures()->setGranted("BGRA", width, height, 0);
    return current->deliver(
        std::make_shared<PushedFrame>(current->figures(), std::move(copy), width, height));
}

bool PushCamera::pushI420(const uint8_t* i420, int width, int height) {
    if (!i420 || !isSize(width, height))
        return false;
    const std::shared_ptr<VirtualStream> current = listeningStream();
    if (!current)
        return false;
    YuvLayout layout;
    layout.width = width;
    layout.height = height;
    PixelPool::Block copy = PixelPool::take(current->pixels(), layout.bytes());
    if (!copy)
        return false;
    std::memcpy(copy.data(), i420, layout.bytes());
    current->figures()->setGranted(layout.code(), width, height, 0);
    return current->deliver(
        std::make_shared<PushedYuvFrame>(current->figures(), std::move(copy), layout, current->scratch()));
}

} // namespace cameras
} // namespace ostrel
