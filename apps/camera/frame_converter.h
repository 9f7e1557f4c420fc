// From any of the four layouts to any other, and between the three levels, with buffers that are kept.
#ifndef OSTREL_APPS_CAMERA_FRAME_CONVERTER_H
#define OSTREL_APPS_CAMERA_FRAME_CONVERTER_H

#include "apps/camera/layout.h"

#include <cstdint>
#include <vector>

namespace ostrel {
namespace cli {

using Bytes = std::vector<uint8_t>;

// One step of the work on a stream of frames. Bound to one thread.
class FrameStep {
public:
    virtual ~FrameStep() = default;
    // The result: frame itself when there is nothing to do, else a buffer of this object that the next call
    // overwrites. frame must have the length that the object was made for.
    virtual const Bytes& apply(const Bytes& frame) = 0;
};

// Allocates its buffers when it is made, and nothing per frame.
class FrameConverter : public FrameStep {
public:
    // Sides must be even where one of the layouts needs that. bottomUp: the source is RGB24 whose bottom row
    // comes first.
    FrameConverter(const Size& size, Layout from, Layout to, bool bottomUp = false);

    const Bytes& apply(const Bytes& frame) override;

private:
    const Bytes& fromArgb(const Bytes& argb);
    const Bytes& fromRgb24(const Bytes& rgb24);
    const Bytes& fromYuy2(const Bytes& yuy2);
    const Bytes& fromI420(const Bytes& i420);
    const Bytes& dropAlpha(const Bytes& argb);
    const Bytes& upsideDown(const Bytes& rgb24);
    void check(int answer) const;

    Size size_;
    Layout from_;
    Layout to_;
    bool bottomUp_;
    Bytes result_;
    Bytes between_; // on the way, where no single conversion exists
    Bytes flipped_;
};

// From one level to another, by way of I420 unless both layouts are YUY2.
class FrameScaler : public FrameStep {
public:
    FrameScaler(VIDEO_QUALITY fromLevel, Layout from, VIDEO_QUALITY toLevel, Layout to, ScaleMethod method,
                bool bottomUp = false);

    const Bytes& apply(const Bytes& frame) override;

private:
    VIDEO_QUALITY fromLevel_;
    VIDEO_QUALITY toLevel_;
    ScaleMethod method_;
    bool packed_; // YUY2 all the way
    FrameConverter before_;
    FrameConverter after_;
    Bytes scaled_;
};

} // namespace cli
} // namespace ostrel

#endif
