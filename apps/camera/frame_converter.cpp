#include "apps/camera/frame_converter.h"

#include "apps/camera/failure.h"
#include "apps/camera/text.h"

#include <algorithm>

namespace ostrel {
namespace cli {

// Which buffers a pair of layouts needs. The library converts RGB24 from its bottom row up, so RGB24 that
// starts with the top row is turned over first; and it has no conversion to RGB24, which is ARGB without its
// A.
FrameConverter::FrameConverter(const Size& size, Layout from, Layout to, bool bottomUp)
    : size_(size), from_(from), to_(to), bottomUp_(bottomUp && from == Layout::Rgb24) {
    if (from == to && !bottomUp_)
        return;
    if (from != to)
        result_.resize(frameBytes(to, size));
    if (from == Layout::Rgb24 && (from == to || !bottomUp_))
        flipped_.resize(frameBytes(from, size));
    if (to == Layout::Rgb24 && from != Layout::Argb)
        between_.resize(frameBytes(Layout::Argb, size));
    if (to == Layout::Yuy2 && from != Layout::I420)
        between_.resize(frameBytes(Layout::I420, size));
}

const Bytes& FrameConverter::apply(const Bytes& frame) {
    if (from_ == to_)
        return bottomUp_ ? upsideDown(frame) : frame;
    switch (from_) {
    case Layout::Argb:
        return fromArgb(frame);
    case Layout::Rgb24:
        return fromRgb24(bottomUp_ ? frame : upsideDown(frame));
    case Layout::Yuy2:
        return fromYuy2(frame);
    case Layout::I420:
        return fromI420(frame);
    }
    return frame;
}

const Bytes& FrameConverter::fromArgb(const Bytes& argb) {
    if (to_ == Layout::Rgb24)
        return dropAlpha(argb);
    Bytes& i420 = to_ == Layout::I420 ? result_ : between_;
    check(OVideoConverter::ARGBToI420(argb.data(), i420.data(), size_.width, size_.height));
    return to_ == Layout::I420 ? result_ : fromI420(i420);
}

const Bytes& FrameConverter::fromRgb24(const Bytes& bottomUp) {
    if (to_ == Layout::Argb) {
        check(OVideoConverter::RGB24ToARGB32(bottomUp, result_, size_.width, size_.height));
        return result_;
    }
    Bytes& i420 = to_ == Layout::I420 ? result_ : between_;
    check(OVideoConverter::RGB24ToI420(bottomUp.data(), i420.data(), size_.width, size_.height));
    return to_ == Layout::I420 ? result_ : fromI420(i420);
}

const Bytes& FrameConverter::fromYuy2(const Bytes& yuy2) {
    if (to_ == Layout::I420) {
        check(OVideoConverter::YUY2ToI420(size_.width, size_.height, yuy2.data(), result_.data()));
        return result_;
    }
    Bytes& argb = to_ == Layout::Argb ? result_ : between_;
    check(OVideoConverter::YUY2ToARGB(yuy2.data(), argb.data(), size_.width, size_.height));
    return to_ == Layout::Argb ? result_ : dropAlpha(argb);
}

const Bytes& FrameConverter::fromI420(const Bytes& i420) {
    if (to_ == Layout::Yuy2) {
        check(OVideoConverter::I420ToYUY2(i420.data(), result_.data(), size_.width, size_.height, 0));
        return result_;
    }
    Bytes& argb = to_ == Layout::Argb ? result_ : between_;
    check(OVideoConverter::I420ToARGB32(i420.data(), argb.data(), size_.width, size_.height));
    return to_ == Layout::Argb ? result_ : dropAlpha(argb);
}

const Bytes& FrameConverter::dropAlpha(const Bytes& argb) {
    const uint8_t* from = argb.data();
    for (std::size_t at = 0; at < result_.size(); at += 3, from += 4)
        std::copy_n(from, 3, result_.data() + at);
    return result_;
}

const Bytes& FrameConverter::upsideDown(const Bytes& rgb24) {
    const std::size_t row = frameBytes(Layout::Rgb24, {size_.width, 1});
    for (std::size_t at = 0; at < rgb24.size(); at += row)
        std::copy_n(rgb24.data() + at, row, flipped_.data() + (rgb24.size() - row - at));
    return flipped_;
}

void FrameConverter::check(int answer) const {
    if (answer != 0)
        throw Failure(EXIT_INTERNAL, "the library refuses to convert " + std::string(layoutName(from_)) +
                                         " to " + layoutName(to_) + " at " + toString(size_));
}

FrameScaler::FrameScaler(VIDEO_QUALITY fromLevel, Layout from, VIDEO_QUALITY toLevel, Layout to,
                         ScaleMethod method, bool bottomUp)
    : fromLevel_(fromLevel), toLevel_(toLevel), method_(method),
      packed_(from == Layout::Yuy2 && to == Layout::Yuy2),
      before_(sizeOf(fromLevel), from, packed_ ? from : Layout::I420, bottomUp),
      after_(sizeOf(toLevel), packed_ ? to : Layout::I420, to) {}

const Bytes& FrameScaler::apply(const Bytes& frame) {
    // The library takes its source by a reference that could change it, and does not change it.
    Bytes& source = const_cast<Bytes&>(before_.apply(frame));
    const int answer = packed_ ? OVideoScaler::scaleYUY2Frame(fromLevel_, source, toLevel_, scaled_, method_)
                               : OVideoScaler::scaleI420Frame(fromLevel_, source, toLevel_, scaled_, method_);
    if (answer != 0)
        throw Failure(EXIT_INTERNAL, "the library refuses to scale a frame of " +
                                         counted(source.size(), "byte") + " from " +
                                         toString(sizeOf(fromLevel_)) + " to " + toString(sizeOf(toLevel_)));
    return after_.apply(scaled_);
}

} // namespace cli
} // namespace ostrel
