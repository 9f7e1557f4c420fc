// Pictures into JPEG.
#ifndef OSTREL_APPS_CAMERA_JPEG_JPEG_ENCODER_H
#define OSTREL_APPS_CAMERA_JPEG_JPEG_ENCODER_H

#include "apps/common/size.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace ostrel::apps::cli {

const int DEFAULT_JPEG_QUALITY = 85;

// Keeps its memory from picture to picture. Bound to one thread.
class JpegEncoder {
public:
    // quality: 1 to 100.
    explicit JpegEncoder(const Size& size, int quality);

    struct Jpeg {
        const uint8_t* data; // until the next call
        std::size_t bytes;
    };
    // bgra: B, G, R and a byte that is not looked at, top row first, without padding.
    Jpeg encode(const uint8_t* bgra);

private:
    Size size_;
    int quality_;
    std::size_t room_;
    std::unique_ptr<uint8_t[]> memory_;
};

} // namespace ostrel::apps::cli

#endif
