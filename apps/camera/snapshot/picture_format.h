// The kinds of picture that snapshot writes.
#ifndef OSTREL_APPS_CAMERA_SNAPSHOT_PICTURE_FORMAT_H
#define OSTREL_APPS_CAMERA_SNAPSHOT_PICTURE_FORMAT_H

#include "apps/camera/frame_stream.h"
#include "apps/camera/jpeg/jpeg_encoder.h"

#include <optional>
#include <string>

namespace ostrel::apps::cli {

// One kind, by the suffix of a file name. Bound to one thread.
class PictureFormat {
public:
    // PNG for names without a suffix. quality: of JPEG that is encoded. Throws a Failure with EXIT_USAGE for
    // a suffix of which no picture can be made.
    PictureFormat(const std::string& path, const Size& size, const std::optional<int>& quality);

    FrameStream::Wanted wanted() const;
    // The file. Empty when the camera's own picture turns out broken.
    std::string encode(const CapturedFrame& frame);

private:
    std::string encodeByQt(const CapturedFrame& frame) const;

    std::string name_; // in lower case
    Size size_;
    std::optional<JpegEncoder> jpeg_; // none: by Qt
};

} // namespace ostrel::apps::cli

#endif
