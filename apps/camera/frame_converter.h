// From any of the four layouts to any other, and between the three levels, with buffers that are kept.
#ifndef OSTREL_APPS_CAMERA_FRAME_CONVERTER_H
#define OSTREL_APPS_CAMERA_FRAME_CONVERTER_H

#include "apps/camera/layout.h"

#include <cstdint>
#include <vector>

namespace ostrel::apps::cli {

using Bytes = std::vector<uint8_t>;

// One step of the work on a stream of frames. Bound to one thread.
class FrameStep {
public:
    virtual ~FrameStep() = default;
    // The result: frame itself when there is nothing to do, else a buffer of this object that the next call
    // overwrites. frame must have the length that the object was made for.
    virtual const Bytes& apply(const Bytes& frame) = 0;
};

// Keeps its buffers from frame to frame.
class FrameConverter : public FrameStep {
public:
    // Sides must be even when one of the layouts is YUY2.
    FrameConverter(const Size& size, Layout from, Layout to);

    const Bytes& apply(const Bytes& frame) override;

private:
    const Bytes& fromArgb(const Bytes& argb);
    const Bytes& fromRgb24(const Bytes& bottomUp);
    const Bytes& fromYuy2(const Bytes& yuy2);
    const Bytes& fromI420(const Bytes& i420);
    const Bytes& dropAlpha(const Bytes& argb);
    const Bytes& upsideDown(const Bytes& rgb24);
    const Bytes& convert(const Bytes& frame);
    void check(int answer) const;

    Size given_;
    Size size_; // the same, made even where I420 is involved
    Layout from_;
    Layout to_;
    Bytes padded_;
    Bytes result_;
    Bytes between_; // on the way, where no single conversion exists
    Bytes flipped_;
    Bytes cropped_;
};

// From one level to another, by way of I420 unless both layouts are YUY2.
class FrameScaler : public FrameStep {
public:
    FrameScaler(VIDEO_QUALITY fromLevel, Layout from, VIDEO_QUALITY toLevel, Layout to, ScaleMethod method);

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

} // namespace ostrel::apps::cli

#endif
