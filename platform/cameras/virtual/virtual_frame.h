// A frame of a virtual camera: counts the pictures that are made of it.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_VIRTUAL_FRAME_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_VIRTUAL_FRAME_H

#include "base/monotonic_clock.h"
#include "platform/cameras/camera.h"
#include "platform/cameras/pixels/convert.h"

#include <memory>

namespace ostrel {
namespace cameras {

class VirtualFrame : public CameraFrame {
public:
    // It arrives now.
    VirtualFrame(std::shared_ptr<Figures> figures, uint32_t sequence, const Mode& mode)
        : figures_(std::move(figures)) {
        facts_.sequence = sequence;
        facts_.time = monotonicNanoseconds();
        facts_.format = mode.format;
        facts_.size = mode.size;
    }

    bool convert(const pixels::Output& to) override {
        if (!draw(to))
            return false;
        figures_->countTaken();
        return true;
    }
    FrameFacts facts() const override { return facts_; }

protected:
    virtual bool draw(const pixels::Output& to) = 0;
    // For draw(), from what show() shows.
    bool drawShown(const pixels::Output& to, pixels::PixelPool& pool) {
        bool whole = false;
        const bool shown = show([&](const pixels::Picture& picture) {
            whole = pixels::convert(picture, to, pool) == pixels::Fault::None;
        });
        return shown && whole;
    }

private:
    const std::shared_ptr<Figures> figures_;
    FrameFacts facts_;
};

} // namespace cameras
} // namespace ostrel

#endif
