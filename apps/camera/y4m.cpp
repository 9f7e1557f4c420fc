#include "apps/camera/y4m.h"

#include "apps/camera/text.h"

#include <charconv>
#include <cmath>
#include <sstream>

namespace ostrel {
namespace cli {

const char Y4M_MAGIC[] = "YUV4MPEG2";
const char Y4M_FRAME[] = "FRAME";

namespace {

const double SLOWEST = 0.001;
const double FASTEST = 10000;
const std::size_t RATE_WIDTH = sizeof "4294967295:4294967295" - 1;

template <typename Number>
bool parseNumber(const std::string& text, Number& number) {
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

bool plausible(const Rate& rate) {
    return rate.numerator > 0 && rate.denominator > 0 && rate.value() >= SLOWEST && rate.value() <= FASTEST;
}

std::string parseSide(const std::string& text, int& side) {
    const bool valid = parseNumber(text, side) && side > 0 && side <= MAXIMUM_EXTENT;
    return valid ? "" : "its frame size " + quoted(text) + " is out of range";
}

// C420 and its variants differ in where colour is sited between the pixels, not in the planes.
bool isI420(const std::string& colours) {
    return colours == "420" || colours == "420jpeg" || colours == "420mpeg2" || colours == "420paldv";
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
    if (!parseNumber(text, value) || !(value >= SLOWEST && value <= FASTEST))
        return std::nullopt;
    return nearestRate(value);
}

Rate nearestRate(double framesPerSecond) {
    static const Rate USUAL[] = {{5, 1},  {15, 2}, {10, 1}, {12, 1}, {25, 2}, {15, 1}, {20, 1},  {24, 1},
                                 {25, 1}, {30, 1}, {48, 1}, {50, 1}, {60, 1}, {90, 1}, {100, 1}, {120, 1}};
    static const Rate BROADCAST[] = {{24000, 1001}, {30000, 1001}, {60000, 1001}};
    const double value = std::min(std::max(framesPerSecond, SLOWEST), FASTEST);
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

std::string y4mHeaderLine(const Y4mHeader& header) {
    const std::string rate =
        std::to_string(header.rate.numerator) + ":" + std::to_string(header.rate.denominator);
    // Ip: progressive, A1:1: square pixels. Colours are BT.601 with limited range, sited in the middle of
    // four pixels. X fields are comments; the last one pads.
    return std::string(Y4M_MAGIC) + " W" + std::to_string(header.size.width) + " H" +
           std::to_string(header.size.height) + " F" + rate +
           " Ip A1:1 C420jpeg XCOLORRANGE=LIMITED XPAD=" + std::string(RATE_WIDTH - rate.size(), '.') + "\n";
}

std::string parseY4mHeader(const std::string& line, Y4mHeader& header) {
    std::istringstream fields(line);
    std::string field;
    fields >> field;
    if (field != Y4M_MAGIC)
        return "it does not start like a Y4M file";
    header = Y4mHeader();
    while (fields >> field) {
        const std::string value = field.substr(1);
        std::string wrong;
        if (field[0] == 'W')
            wrong = parseSide(value, header.size.width);
        else if (field[0] == 'H')
            wrong = parseSide(value, header.size.height);
        else if (field[0] == 'C' && !isI420(value))
            wrong = "its colours are " + quoted(value) + ", only 4:2:0 with 8 bits is read";
        else if (field[0] == 'F')
            header.rate = parseRate(value).value_or(Rate()); // 0:0 stands for a rate that is not known
        if (!wrong.empty())
            return wrong;
    }
    if (header.size.empty())
        return "its frame size is missing";
    return header.size.even()
               ? ""
               : "its frame size " + toString(header.size) + " is odd, only even sides are read";
}

} // namespace cli
} // namespace ostrel
