#include "apps/camera/y4m.h"

#include "apps/common/text.h"
#include "base/y4m_header.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace ostrel::apps::cli {

namespace {

const std::size_t RATE_WIDTH = sizeof "4294967295:4294967295" - 1;

template <typename Number>
bool parseNumber(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

// Of one colour plane.
Size chromaSize(const Y4mHeader& header) {
    switch (header.colours) {
    case Y4M_420:
        return {(header.width + 1) / 2, (header.height + 1) / 2};
    case Y4M_422:
        return {(header.width + 1) / 2, header.height};
    case Y4M_444:
        return {header.width, header.height};
    case Y4M_MONO:
        break;
    }
    return {0, 0};
}

std::size_t pixelsOf(const Size& size) {
    return static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
}

uint8_t toByte(double value) {
    return static_cast<uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

bool plausible(const Rate& rate) {
    return rate.numerator > 0 && rate.denominator > 0 && rate.value() >= Y4M_LEAST_RATE &&
           rate.value() <= Y4M_GREATEST_RATE;
}

} // namespace

std::optional<Rate> parseRate(const std::string& text) {
    Rate rate;
    const std::size_t bar = text.find_first_of("/:");
    if (bar != std::string::npos) {
        if (!parseNumber(text.substr(0, bar), rate.numerator) ||
            !parseNumber(text.substr(bar + 1), rate.denominator))
            return std::nullopt;
        return plausible(rate) ? std::optional<Rate>(rate) : std::nullopt;
    }
    double value = 0;
    if (!parseDecimal(text, value) || !(value >= Y4M_LEAST_RATE && value <= Y4M_GREATEST_RATE))
        return std::nullopt;
    return nearestRate(value);
}

Rate nearestRate(double framesPerSecond) {
    static const Rate USUAL[] = {{5, 1},  {15, 2}, {10, 1}, {12, 1}, {25, 2}, {15, 1}, {20, 1},  {24, 1},
                                 {25, 1}, {30, 1}, {48, 1}, {50, 1}, {60, 1}, {90, 1}, {100, 1}, {120, 1}};
    static const Rate BROADCAST[] = {{24000, 1001}, {30000, 1001}, {60000, 1001}};
    const double value = std::min(std::max(framesPerSecond, Y4M_LEAST_RATE), Y4M_GREATEST_RATE);
    // These lie within a hundredth of whole rates, so they are meant only when they are hit exactly.
    for (const Rate& rate : BROADCAST)
        if (std::fabs(value - rate.value()) < 0.0051)
            return rate;
    for (const Rate& rate : USUAL)
        if (std::fabs(value - rate.value()) < rate.value() / 100)
            return rate;
    if (value == std::floor(value))
        return {static_cast<uint32_t>(value), 1};
    return {static_cast<uint32_t>(std::lround(value * 1000)), 1000};
}

std::string y4mHeaderLine(const Size& size, const Rate& rate) {
    const std::string fraction = std::to_string(rate.numerator) + ":" + std::to_string(rate.denominator);
    // Ip: progressive, A1:1: square pixels. Colours are BT.601 with limited range, sited in the middle of
    // four pixels. X fields are comments; the last one pads.
    return std::string(Y4M_MAGIC) + " W" + std::to_string(size.width) + " H" + std::to_string(size.height) +
           " F" + fraction +
           " Ip A1:1 C420jpeg XCOLORRANGE=LIMITED XPAD=" + std::string(RATE_WIDTH - fraction.size(), '.') +
           "\n";
}

std::size_t y4mFrameBytes(const Y4mHeader& header) {
    return pixelsOf({header.width, header.height}) + 2 * pixelsOf(chromaSize(header));
}

void y4mToArgb(const Y4mHeader& header, const std::vector<uint8_t>& planes, std::vector<uint8_t>& argb) {
    const Size chroma = chromaSize(header);
    const int columns = chroma.width == header.width ? 1 : 2; // of pixels that share a colour
    const int rows = chroma.height == header.height ? 1 : 2;
    const double black = header.fullRange ? 0 : 16;
    const double lumaGain = header.fullRange ? 1 : 255.0 / 219;
    const double chromaGain = header.fullRange ? 1 : 255.0 / 224;
    const uint8_t* luma = planes.data();
    const uint8_t* blues = luma + pixelsOf({header.width, header.height});
    const uint8_t* reds = blues + pixelsOf(chroma);
    argb.resize(4 * pixelsOf({header.width, header.height}));
    uint8_t* to = argb.data();
    for (int y = 0; y < header.height; ++y)
        for (int x = 0; x < header.width; ++x, to += 4) {
            const double grey = lumaGain * (*luma++ - black);
            const std::ptrdiff_t at = std::ptrdiff_t(y / rows) * chroma.width + x / columns;
            const double blue = chroma.empty() ? 0 : chromaGain * (blues[at] - 128);
            const double red = chroma.empty() ? 0 : chromaGain * (reds[at] - 128);
            to[0] = toByte(grey + 1.772 * blue);
            to[1] = toByte(grey - 0.344136 * blue - 0.714136 * red);
            to[2] = toByte(grey + 1.402 * red);
            to[3] = 255;
        }
}

} // namespace ostrel::apps::cli
