// A frame of a virtual camera: counts the pictures that are made of it.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_VIRTUAL_FRAME_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_VIRTUAL_FRAME_H

#include "platform/cameras/camera.h"

#include <memory>

namespace ostrel {
namespace cameras {

class VirtualFrame : public CameraFrame {
public:
    explicit VirtualFrame(std::shared_ptr<Figures> figures) : figures_(std::move(figures)) {}

    bool convert(uint8_t* bgra, int width, int height, int stride) override {
        if (!draw(bgra, width, height, stride))
            return false;
        figures_->countTaken();
        return true;
    }

protected:
    virtual bool draw(uint8_t* bgra, int width, int height, int stride) = 0;

private:
    const std::shared_ptr<Figures> figures_;
};

} // namespace cameras
} // namespace ostrel

#endif
