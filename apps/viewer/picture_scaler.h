// Brings captured frames to one of the library's three sizes.
#ifndef OSTREL_APPS_VIEWER_PICTURE_SCALER_H
#define OSTREL_APPS_VIEWER_PICTURE_SCALER_H

#include <ostrel/capture.h>
#include <ostrel/processing.h>

#include <optional>
#include <vector>

namespace ostrel::apps::viewer {

// A picture in somebody else's memory: B, G, R, A, top row first, rows without padding.
struct Picture {
    const uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
};

// Keeps its buffers from frame to frame. Bound to one thread.
class PictureScaler {
public:
    void setLevel(std::optional<VIDEO_QUALITY> level) { level_ = level; } // none: frames stay as they are
    void setMethod(ScaleMethod method) { method_ = method; }

    // The picture is in the frame's memory or in this object's, and is good until either is used again.
    Picture scale(const VideoFrame& frame);

private:
    std::optional<VIDEO_QUALITY> level_;
    ScaleMethod method_ = SCALE_METHOD_BOX;
    std::vector<uint8_t> captured_; // I420
    std::vector<uint8_t> scaled_;   // I420
    std::vector<uint8_t> bgra_;
};

} // namespace ostrel::apps::viewer

#endif
