// The camera behind OVideoFileCamera.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_FILE_CAMERA_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_FILE_CAMERA_H

#include "platform/cameras/virtual/camera_base.h"
#include "platform/cameras/virtual/y4m_clip.h"

#include <memory>
#include <string>

namespace ostrel {
namespace cameras {

// Thread-safe. Each stream plays the file from its beginning; a frame is read when somebody takes it.
class FileCamera : public VirtualCamera {
public:
    // known: what is wrong with the file; such a camera does not open.
    FileCamera(std::shared_ptr<VirtualControls> controls, std::string path, bool loop, std::string known);

protected:
    Error prepare() override;
    void release() override { clip_.reset(); }
    Error begin(const std::shared_ptr<VirtualStream>& stream) override;

private:
    const std::string path_;
    const bool loop_;
    const std::string known_;
    std::shared_ptr<Y4mClip> clip_; // while it is open
};

} // namespace cameras
} // namespace ostrel

#endif
