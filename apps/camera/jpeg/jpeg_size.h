// What the headers of a JPEG say, without decoding it.
#ifndef OSTREL_APPS_CAMERA_JPEG_JPEG_SIZE_H
#define OSTREL_APPS_CAMERA_JPEG_JPEG_SIZE_H

#include "apps/common/size.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ostrel::apps::cli {

// Nothing when there are no headers up to the compressed data, or the picture is none that players know:
// 8 bits, baseline or progressive. data begins with the picture.
std::optional<Size> jpegSize(const uint8_t* data, std::size_t bytes);

} // namespace ostrel::apps::cli

#endif
