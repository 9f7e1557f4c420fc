#include "platform/CoreVideo/pixel_buffer.h"
#include "platform/QTKit/captured_picture.h"

namespace ostrel {

// The camera's frame until it is converted.
class CapturedPicture : public PixelSource {
public:
    CapturedPicture(std::shared_ptr<PictureMaker> maker, std::shared_ptr<cameras::CameraFrame> frame,
                    std::shared_ptr<PolledPicture> polled, size_t bytesPerRow)
        : maker_(std::move(maker)), frame_(std::move(frame)), polled_(std::move(polled)),
          bytesPerRow_(bytesPerRow) {}

    std::shared_ptr<uint8_t> pixels() override {
        return maker_->convert(*frame_, bytesPerRow_, polled_.get());
    }

private:
    const std::shared_ptr<PictureMaker> maker_;
    const std::shared_ptr<cameras::CameraFrame> frame_;
    const std::shared_ptr<PolledPicture> polled_;
    const size_t bytesPerRow_;
};

CVPixelBufferRef PictureMaker::makeBuffer(const std::shared_ptr<cameras::CameraFrame>& frame,
                                          const std::shared_ptr<PolledPicture>& polled) {
    const size_t width = static_cast<size_t>(width_);
    const size_t bytesPerRow = static_cast<size_t>(frame->rowBytes(width_));
    std::unique_ptr<PixelSource> picture(new CapturedPicture(shared_from_this(), frame, polled, bytesPerRow));
    return new __CVBuffer(width, static_cast<size_t>(height_), bytesPerRow, std::move(picture), readers_);
}

bool PictureMaker::isBeingRead() const {
    return readers_->load() > 0;
}

} // namespace ostrel
