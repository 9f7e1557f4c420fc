#include "bench/capture/pictures.h"

#include "support/jpeg_pictures.h"

#include <cmath>
#include <linux/videodev2.h>

namespace bench {

namespace {

const int STAMP_BITS = 32;
const int FIELD = 8; // pixels
const int STAMP_ROWS = 2;

struct Yuv {
    uint8_t y, u, v;
};

uint8_t clamped(double value) {
    return static_cast<uint8_t>(value < 16 ? 16 : value > 235 ? 235 : value);
}

// Soft shapes with the noise of a sensor on them: a picture that is neither easy nor hard for a JPEG decoder.
Yuv pixelAt(int x, int y, int width, int height) {
    static uint32_t noise = 1;
    noise = noise * 1664525u + 1013904223u;
    const double grain = static_cast<double>(noise >> 29) - 3.5;
    const double across = static_cast<double>(x) / width;
    const double down = static_cast<double>(y) / height;
    const double shape = std::sin(across * 19) * std::cos(down * 13) * 70;
    const double edge = (x / 40 + y / 40) % 2 ? 12 : -12;
    return {clamped(126 + shape + edge + grain), clamped(128 + 60 * std::sin(across * 5)),
            clamped(128 + 60 * std::cos(down * 4))};
}

std::vector<Yuv> paint(int width, int height) {
    std::vector<Yuv> pixels;
    pixels.reserve(static_cast<size_t>(width) * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            pixels.push_back(pixelAt(x, y, width, height));
    return pixels;
}

std::vector<uint8_t> yuyv(const std::vector<Yuv>& pixels) {
    std::vector<uint8_t> bytes;
    bytes.reserve(pixels.size() * 2);
    for (size_t i = 0; i + 1 < pixels.size(); i += 2)
        bytes.insert(bytes.end(), {pixels[i].y, pixels[i].u, pixels[i + 1].y, pixels[i].v});
    return bytes;
}

std::vector<uint8_t> nv12(const std::vector<Yuv>& pixels, int width, int height) {
    std::vector<uint8_t> bytes;
    bytes.reserve(pixels.size() * 3 / 2);
    for (const Yuv& pixel : pixels)
        bytes.push_back(pixel.y);
    for (int y = 0; y < height; y += 2)
        for (int x = 0; x < width; x += 2) {
            const Yuv& pixel =
                pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
            bytes.insert(bytes.end(), {pixel.u, pixel.v});
        }
    return bytes;
}

// As webcams encode: baseline, 4:2:2, about 85 % quality.
std::vector<uint8_t> jpeg(const std::vector<Yuv>& pixels, int width, int height) {
    ostrel::support::JpegOptions options;
    options.colours = ostrel::support::JpegColours::Yuv;
    options.quality = 85;
    return ostrel::support::encodeJpeg(width, height, options, [&](int x, int y) {
        const Yuv& pixel =
            pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)];
        return std::array<uint8_t, 3>{pixel.y, pixel.u, pixel.v};
    });
}

} // namespace

std::vector<uint8_t> makePicture(uint32_t fourcc, int width, int height) {
    const std::vector<Yuv> pixels = paint(width, height);
    switch (fourcc) {
    case V4L2_PIX_FMT_YUYV:
        return yuyv(pixels);
    case V4L2_PIX_FMT_NV12:
        return nv12(pixels, width, height);
    case V4L2_PIX_FMT_MJPEG:
        return jpeg(pixels, width, height);
    default:
        return {};
    }
}

uint32_t bytesPerLine(uint32_t fourcc, int width) {
    const auto pixels = static_cast<uint32_t>(width);
    return fourcc == V4L2_PIX_FMT_YUYV ? pixels * 2 : fourcc == V4L2_PIX_FMT_NV12 ? pixels : 0;
}

void stamp(uint8_t* picture, uint32_t fourcc, int width, uint32_t number) {
    if (fourcc == V4L2_PIX_FMT_MJPEG)
        return;
    const size_t step = fourcc == V4L2_PIX_FMT_YUYV ? 2 : 1; // from one brightness to the next
    for (size_t y = 0; y < STAMP_ROWS; ++y) {
        uint8_t* row = picture + y * bytesPerLine(fourcc, width);
        for (int bit = 0; bit < STAMP_BITS; ++bit)
            for (int x = 0; x < FIELD; ++x)
                row[static_cast<size_t>(bit * FIELD + x) * step] = number >> bit & 1 ? 235 : 16;
    }
}

uint32_t readStamp(const uint8_t* pixels, int bytesPerPixel, int width) {
    uint32_t number = 0;
    if (width < STAMP_BITS * FIELD)
        return 0;
    for (int bit = 0; bit < STAMP_BITS; ++bit)
        if (pixels[(bit * FIELD + FIELD / 2) * bytesPerPixel] > 127)
            number |= 1u << bit;
    return number;
}

} // namespace bench
