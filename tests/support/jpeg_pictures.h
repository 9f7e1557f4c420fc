// JPEG pictures for tests and benchmarks, made with libjpeg.
#ifndef OSTREL_TESTS_SUPPORT_JPEG_PICTURES_H
#define OSTREL_TESTS_SUPPORT_JPEG_PICTURES_H

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace ostrel::support {

enum class JpegColours { Bgr, Yuv };

struct JpegOptions {
    JpegColours colours = JpegColours::Bgr; // of the pixels that go in
    int quality = 90;
    int horizontal = 2; // luma samples for each chroma sample: 2 x 1 is what most cameras send
    int vertical = 1;
    bool grey = false;
    bool progressive = false;
    bool tables = true; // most cameras leave out the Huffman tables
    int restart = 0;    // rows between restart markers
};

// Of pixels by their place.
std::vector<uint8_t> encodeJpeg(int width, int height, const JpegOptions& options,
                                const std::function<std::array<uint8_t, 3>(int x, int y)>& pixelAt);

// Four quadrants: red, green; blue, light grey.
std::vector<uint8_t> quadrantsAsJpeg(int width, int height, const JpegOptions& options = JpegOptions());

// What each quadrant is, as B, G, R.
extern const uint8_t JPEG_QUADRANTS[4][3];

} // namespace ostrel::support

#endif
