// What the client's object, the camera that captures see and the frames that are still held share.
#ifndef OSTREL_PLATFORM_CAMERAS_VIRTUAL_CONTROLS_H
#define OSTREL_PLATFORM_CAMERAS_VIRTUAL_CONTROLS_H

#include <ostrel/virtual_camera.h>

#include "platform/cameras/camera.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace ostrel {
namespace cameras {

// Lives as long as anybody needs the virtual camera. Thread-safe.
struct VirtualControls {
    VirtualControls(std::string id, const std::string& shownName)
        : identifier(std::move(id)), displayName(shownName.empty() ? identifier : shownName) {}

    bool told(VIRTUAL_CAMERA_FAULT which) const { return fault.load(std::memory_order_relaxed) == which; }

    const std::string identifier;
    const std::string displayName;
    std::atomic<VIRTUAL_CAMERA_FAULT> fault{VIRTUAL_CAMERA_FAULT_NONE};
    std::atomic<uint32_t> delivered{0};
    std::atomic<uint32_t> taken{0};
};

// The figures of one stream; frames hold them, as they may be taken after the stream has stopped.
// Thread-safe.
class StreamFigures {
public:
    explicit StreamFigures(std::shared_ptr<VirtualControls> controls) : controls_(std::move(controls)) {}

    const VirtualControls& controls() const { return *controls_; }
    void countDelivered(uint64_t passedOver);
    void countTaken();
    // width 0: not known yet.
    void setGranted(const std::string& format, int width, int height, double rate);
    void setEnded(const std::string& why);
    StreamStatistics snapshot() const;

private:
    const std::shared_ptr<VirtualControls> controls_;
    std::atomic<uint64_t> delivered_{0};
    std::atomic<uint64_t> taken_{0};
    std::atomic<uint64_t> skipped_{0};
    mutable std::mutex mutex_; // of rest_
    StreamStatistics rest_;    // what is not counted for each frame
};

// A frame of a virtual camera: counts its conversions and carries the padding that its camera was told to
// add.
class VirtualFrame : public CameraFrame {
public:
    explicit VirtualFrame(std::shared_ptr<StreamFigures> figures);

    bool convert(uint8_t* bgra, int width, int height, int stride) override;
    int rowPadding() const override { return padding_; }

protected:
    virtual bool draw(uint8_t* bgra, int width, int height, int stride) = 0;

private:
    const std::shared_ptr<StreamFigures> figures_;
    const int padding_;
};

} // namespace cameras
} // namespace ostrel

#endif
