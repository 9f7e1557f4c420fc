// Y4M files: the rate and the first line that are written, the planes that are read.
#ifndef OSTREL_APPS_CAMERA_Y4M_H
#define OSTREL_APPS_CAMERA_Y4M_H

#include "apps/common/size.h"
#include "base/y4m_header.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ostrel::apps::cli {

// Frames a second as a fraction.
struct Rate {
    uint32_t numerator = 30;
    uint32_t denominator = 1;

    double value() const { return static_cast<double>(numerator) / denominator; }
};

// "25", "29.97", "30000/1001" or "30000:1001"; nothing for anything else or for a rate that Y4M players
// refuse.
std::optional<Rate> parseRate(const std::string& text);

// The nearest rate that cameras and video files have, when one is within a hundredth; else the rate in
// thousandths.
Rate nearestRate(double framesPerSecond);

// The stream line with its line break. Always of the same length for one size, whatever the rate, so that a
// finished file can be given the rate that was measured.
std::string y4mHeaderLine(const Size& size, const Rate& rate);

std::size_t y4mFrameBytes(const Y4mHeader& header);
// From the planes of one frame, in BT.601. argb is made to fit.
void y4mToArgb(const Y4mHeader& header, const std::vector<uint8_t>& planes, std::vector<uint8_t>& argb);

} // namespace ostrel::apps::cli

#endif
