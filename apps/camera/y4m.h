// The Y4M format: a text line for the stream, then for each frame a text line and its I420 planes.
#ifndef OSTREL_APPS_CAMERA_Y4M_H
#define OSTREL_APPS_CAMERA_Y4M_H

#include "apps/camera/size.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ostrel {
namespace cli {

// Frames a second as a fraction.
struct Rate {
    uint32_t numerator = 30;
    uint32_t denominator = 1;

    double value() const { return static_cast<double>(numerator) / denominator; }
};

// "25", "29.97", "30000/1001" or "30000:1001"; nothing for anything else or for a rate outside 0.001 to
// 10000.
std::optional<Rate> parseRate(const std::string& text);

// The nearest rate that cameras and video files have, when one is within a hundredth; else the rate in
// thousandths.
Rate nearestRate(double framesPerSecond);

struct Y4mHeader {
    Size size;
    Rate rate;
};

// The stream line with its line break. Always of the same length for one size, whatever the rate, so that a
// finished file can be given the rate that was measured.
std::string y4mHeaderLine(const Y4mHeader& header);

// From a stream line without its line break. Returns what is wrong with it, empty when nothing is.
std::string parseY4mHeader(const std::string& line, Y4mHeader& header);

extern const char Y4M_MAGIC[]; // "YUV4MPEG2"
extern const char Y4M_FRAME[]; // "FRAME"

} // namespace cli
} // namespace ostrel

#endif
