#include "base/y4m_header.h"

#include "base/limits.h"

namespace ostrel {

const char Y4M_MAGIC[] = "YUV4MPEG2";

namespace {

const size_t MAGIC_LENGTH = sizeof(Y4M_MAGIC) - 1;
const char NO_MAGIC[] = "not a Y4M file: it does not begin with YUV4MPEG2";

// A decimal number of digits alone, at most `greatest`; false for anything else.
bool parseNumber(const std::string& text, uint64_t greatest, uint64_t& number) {
    if (text.empty())
        return false;
    uint64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + static_cast<uint64_t>(c - '0');
        if (value > greatest)
            return false;
    }
    number = value;
    return true;
}

// What a message quotes from the file: short, and in characters that every terminal shows.
std::string quoted(const std::string& text) {
    std::string result;
    for (const char c : text.substr(0, 40))
        result += c >= ' ' && c <= '~' ? c : '?';
    return "\"" + result + (text.size() > 40 ? "...\"" : "\"");
}

std::string parseSide(const std::string& value, const char* what, int& side) {
    uint64_t pixels = 0;
    if (!parseNumber(value, LARGEST_SIDE, pixels) || pixels == 0)
        return std::string("the ") + what + " " + quoted(value) + " is not from 1 to 16384";
    side = static_cast<int>(pixels);
    return std::string();
}

std::string parseRate(const std::string& value, Y4mHeader& header) {
    const uint64_t greatest = 0xFFFFFFFFu;
    const size_t colon = value.find(':');
    uint64_t frames = 0, seconds = 0;
    if (colon == std::string::npos || !parseNumber(value.substr(0, colon), greatest, frames) ||
        !parseNumber(value.substr(colon + 1), greatest, seconds))
        return "the frame rate " + quoted(value) + " is not written as 30:1";
    if (frames == 0 && seconds == 0) // the way to say that it is not known
        return std::string();
    const double rate = seconds ? static_cast<double>(frames) / static_cast<double>(seconds) : 0;
    if (rate < Y4M_LEAST_RATE || rate > Y4M_GREATEST_RATE)
        return "the frame rate " + quoted(value) + " is not from 0.001 to 1000 a second";
    header.rateNumerator = static_cast<uint32_t>(frames);
    header.rateDenominator = static_cast<uint32_t>(seconds);
    return std::string();
}

// C420 and its variants differ in where colour is sited between the pixels, not in the planes.
std::string parseColours(const std::string& value, Y4mColours& colours) {
    static const struct {
        const char* name;
        Y4mColours colours;
    } KNOWN[] = {{"420", Y4M_420}, {"420jpeg", Y4M_420}, {"420mpeg2", Y4M_420}, {"420paldv", Y4M_420},
                 {"422", Y4M_422}, {"444", Y4M_444},     {"mono", Y4M_MONO}};
    for (const auto& known : KNOWN)
        if (value == known.name) {
            colours = known.colours;
            return std::string();
        }
    return "the pixel layout " + quoted("C" + value) +
           " is not one of C420, C422, C444 and Cmono with 8 bits";
}

std::string parseTag(const std::string& tag, Y4mHeader& header) {
    const std::string value = tag.empty() ? tag : tag.substr(1);
    switch (tag.empty() ? ' ' : tag[0]) {
    case 'W':
        return parseSide(value, "width", header.width);
    case 'H':
        return parseSide(value, "height", header.height);
    case 'F':
        return parseRate(value, header);
    case 'C':
        return parseColours(value, header.colours);
    case 'X':
        if (value == "COLORRANGE=FULL")
            header.fullRange = true;
        return std::string();
    default: // interlacing (I) and the shape of pixels (A) change nothing here; other tags may come to be
        return std::string();
    }
}

} // namespace

std::string parseY4mHeader(const std::string& line, Y4mHeader& header) {
    if (line.compare(0, MAGIC_LENGTH, Y4M_MAGIC) != 0 ||
        (line.size() > MAGIC_LENGTH && line[MAGIC_LENGTH] != ' '))
        return NO_MAGIC;
    const Y4mHeader nothing = {0, 0, 25, 1, Y4M_420, false};
    header = nothing;
    for (size_t at = MAGIC_LENGTH; at < line.size();) {
        const size_t begin = at + 1; // behind the blank
        at = line.find(' ', begin);
        at = at == std::string::npos ? line.size() : at;
        const std::string wrong = parseTag(line.substr(begin, at - begin), header);
        if (!wrong.empty())
            return wrong;
    }
    if (header.width == 0)
        return "the header has no width (W)";
    if (header.height == 0)
        return "the header has no height (H)";
    return std::string();
}

} // namespace ostrel
