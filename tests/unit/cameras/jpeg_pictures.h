// JPEG pictures for tests, made with libjpeg.
#ifndef OSTREL_TESTS_UNIT_CAMERAS_JPEG_PICTURES_H
#define OSTREL_TESTS_UNIT_CAMERAS_JPEG_PICTURES_H

#include <cstdint>
#include <vector>

namespace ostrel {
namespace tests {

struct JpegOptions {
    int horizontal = 2; // luma samples for each chroma sample: 2 x 1 is what most cameras send
    int vertical = 1;
    bool grey = false;
    bool progressive = false;
    bool tables = true; // most cameras leave out the Huffman tables
    int restart = 0;    // rows between restart markers
};

// Four quadrants: red, green; blue, light grey.
std::vector<uint8_t> quadrantsAsJpeg(int width, int height, const JpegOptions& options = JpegOptions());

// What each quadrant is, as B, G, R.
extern const uint8_t kJpegQuadrants[4][3];

} // namespace tests
} // namespace ostrel

#endif
