#include "apps/camera/frame_converter.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

bool isI420(Layout layout) {
    return layout == Layout::I420;
}

// The picture with a row and a column more, which repeat the last ones, or without them. The colour planes of
// I420 are the same for both sizes.
void fit(Layout layout, const Bytes& from, const Size& size, Bytes& to, const Size& wanted) {
    const std::size_t pixel = isI420(layout) ? 1 : frameBytes(layout, {1, 1});
    const std::size_t row = pixel * static_cast<std::size_t>(size.width);
    const std::size_t wantedRow = pixel * static_cast<std::size_t>(wanted.width);
    to.resize(frameBytes(layout, wanted));
    for (int y = 0; y < wanted.height; ++y) {
        const uint8_t* source = from.data() + row * static_cast<std::size_t>(std::min(y, size.height - 1));
        uint8_t* target = to.data() + wantedRow * static_cast<std::size_t>(y);
        std::copy_n(source, std::min(row, wantedRow), target);
        if (wantedRow > row)
            std::copy_n(source + row - pixel, pixel, target + row);
    }
    if (isI420(layout))
        std::copy(from.begin() + static_cast<std::ptrdiff_t>(row) * size.height, from.end(),
                  to.begin() + static_cast<std::ptrdiff_t>(wantedRow) * wanted.height);
}

} // namespace

// Which buffers a pair of layouts needs. The library converts RGB24 from its bottom row up, so RGB24 is
// turned over first; it has no conversion to RGB24, which is ARGB without its A; and its I420 has even sides.
FrameConverter::FrameConverter(const Size& size, Layout from, Layout to)
    : given_(size), size_(size), from_(from), to_(to) {
    if (from == to)
        return;
    if (isI420(from) || isI420(to))
        size_ = {size.width + size.width % 2, size.height + size.height % 2};
    result_.resize(frameBytes(to, size_));
    if (from == Layout::Rgb24)
        flipped_.resize(frameBytes(from, size_));
    if (to == Layout::Rgb24 && from != Layout::Argb)
        between_.resize(frameBytes(Layout::Argb, size_));
    if (to == Layout::Yuy2 && from != Layout::I420)
        between_.resize(frameBytes(Layout::I420, size_));
}

const Bytes& FrameConverter::apply(const Bytes& frame) {
    if (from_ == to_)
        return frame;
    if (given_ == size_)
        return convert(frame);
    fit(from_, frame, given_, padded_, size_);
    fit(to_, convert(padded_), size_, cropped_, given_);
    return cropped_;
}

const Bytes& FrameConverter::convert(const Bytes& frame) {
    switch (from_) {
    case Layout::Argb:
        return fromArgb(frame);
    case Layout::Rgb24:
        return fromRgb24(upsideDown(frame));
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
                         ScaleMethod method)
    : fromLevel_(fromLevel), toLevel_(toLevel), method_(method),
      packed_(from == Layout::Yuy2 && to == Layout::Yuy2),
      before_(sizeOf(fromLevel), from, packed_ ? from : Layout::I420),
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

} // namespace ostrel::apps::cli
