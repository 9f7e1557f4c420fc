#include "apps/viewer/picture_scaler.h"

namespace ostrel::apps::viewer {

// The library scales I420 and YUY2 alone, so the frame makes a round trip through I420.
Picture PictureScaler::scale(const VideoFrame& frame) {
    const Picture asCaptured = {frame.data.data(), frame.width, frame.height};
    const int from = OVideoCommon::resolutionToQuality(frame.width, frame.height);
    if (!level_ || from < 0)
        return asCaptured;

    captured_.resize(frame.data.size() / 4 * 3 / 2);
    OVideoConverter::ARGBToI420(frame.data.data(), captured_.data(), frame.width, frame.height);

    Picture result;
    OVideoCommon::qualityToResolution(*level_, result.width, result.height);
    if (OVideoScaler::scaleI420Frame(VIDEO_QUALITY(from), captured_, *level_, scaled_, method_) != 0)
        return asCaptured;

    bgra_.resize(static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height) * 4);
    OVideoConverter::I420ToARGB32(scaled_.data(), bgra_.data(), result.width, result.height);
    result.pixels = bgra_.data();
    return result;
}

} // namespace ostrel::apps::viewer
