#include "platform/cameras/virtual/y4m_reader.h"

#include "base/limits.h"

#include <algorithm>
#include <cstring>

namespace ostrel {
namespace cameras {

namespace {

const char MAGIC[] = "YUV4MPEG2";
const size_t MAGIC_LENGTH = sizeof(MAGIC) - 1;
const char FRAME[] = "FRAME";
const size_t FRAME_LENGTH = sizeof(FRAME) - 1;

// Longer lines than any program writes: what has no line break by then is not text.
const size_t LONGEST_HEADER = 4096;
const size_t LONGEST_FRAME_LINE = 256;

const double GREATEST_RATE = 1000;
const double LEAST_RATE = 0.001;
const double UNKNOWN_RATE = 25; // played at this when the file does not say

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

std::string parseRate(const std::string& value, double& rate) {
    const uint64_t greatest = 0xFFFFFFFFu;
    const size_t colon = value.find(':');
    uint64_t frames = 0, seconds = 0;
    if (colon == std::string::npos || !parseNumber(value.substr(0, colon), greatest, frames) ||
        !parseNumber(value.substr(colon + 1), greatest, seconds))
        return "the frame rate " + quoted(value) + " is not written as 30:1";
    if (frames == 0 && seconds == 0) { // the way to say that it is not known
        rate = UNKNOWN_RATE;
        return std::string();
    }
    rate = seconds ? static_cast<double>(frames) / static_cast<double>(seconds) : GREATEST_RATE + 1;
    if (rate < LEAST_RATE || rate > GREATEST_RATE)
        return "the frame rate " + quoted(value) + " is not from 0.001 to 1000 a second";
    return std::string();
}

std::string parseChroma(const std::string& value, Chroma& chroma) {
    static const struct {
        const char* name;
        Chroma chroma;
    } KNOWN[] = {{"420", Chroma::Halved},      {"420jpeg", Chroma::Halved},    {"420mpeg2", Chroma::Halved},
                 {"420paldv", Chroma::Halved}, {"422", Chroma::HalvedColumns}, {"444", Chroma::Full},
                 {"mono", Chroma::None}};
    for (const auto& known : KNOWN)
        if (value == known.name) {
            chroma = known.chroma;
            return std::string();
        }
    return "the pixel layout " + quoted("C" + value) +
           " is not one of C420, C422, C444 and Cmono with 8 bits";
}

} // namespace

std::string Y4mReader::open(const ByteSource& source) {
    source_ = &source;
    format_ = Y4mFormat();
    std::string start(LONGEST_HEADER, '\0');
    const int64_t got = source.read(0, &start[0], start.size());
    if (got < 0)
        return "it cannot be read";
    start.resize(static_cast<size_t>(got));
    if (start.empty())
        return "it is empty";
    if (start.compare(0, MAGIC_LENGTH, MAGIC, std::min(start.size(), MAGIC_LENGTH)) != 0)
        return "not a Y4M file: it does not begin with YUV4MPEG2";
    const size_t end = start.find('\n');
    if (end == std::string::npos)
        return start.size() < LONGEST_HEADER ? "it ends within its header"
                                             : "the header has more than 4096 bytes";
    const std::string wrong = parseHeader(start.substr(0, end));
    if (!wrong.empty()) {
        format_ = Y4mFormat();
        return wrong;
    }
    firstFrame_ = end + 1;
    uint64_t position = firstFrame_, planes = 0;
    const Found found = next(position, planes);
    if (found == Found::Frame)
        return std::string();
    format_ = Y4mFormat();
    return found == Found::End ? "it has no whole frame" : "no FRAME line behind the header";
}

std::string Y4mReader::parseHeader(const std::string& header) {
    if (header.size() > MAGIC_LENGTH && header[MAGIC_LENGTH] != ' ')
        return "not a Y4M file: it does not begin with YUV4MPEG2";
    format_.framesPerSecond = UNKNOWN_RATE;
    for (size_t at = MAGIC_LENGTH; at < header.size();) {
        const size_t begin = at + 1; // behind the blank
        at = std::min(header.find(' ', begin), header.size());
        const std::string wrong = parseTag(header.substr(begin, at - begin));
        if (!wrong.empty())
            return wrong;
    }
    if (format_.layout.width == 0)
        return "the header has no width (W)";
    if (format_.layout.height == 0)
        return "the header has no height (H)";
    return std::string();
}

std::string Y4mReader::parseTag(const std::string& tag) {
    const std::string value = tag.empty() ? tag : tag.substr(1);
    switch (tag.empty() ? ' ' : tag[0]) {
    case 'W':
        return parseSide(value, "width", format_.layout.width);
    case 'H':
        return parseSide(value, "height", format_.layout.height);
    case 'F':
        return parseRate(value, format_.framesPerSecond);
    case 'C':
        return parseChroma(value, format_.layout.chroma);
    case 'X':
        if (value == "COLORRANGE=FULL")
            format_.layout.fullRange = true;
        return std::string();
    default: // interlacing (I) and the shape of pixels (A) change nothing here; other tags may come to be
        return std::string();
    }
}

Y4mReader::Found Y4mReader::next(uint64_t& position, uint64_t& planes) const {
    char line[LONGEST_FRAME_LINE];
    const int64_t got = source_->read(position, line, sizeof(line));
    if (got <= 0)
        return got == 0 ? Found::End : Found::Broken;
    const size_t size = static_cast<size_t>(got);
    if (std::memcmp(line, FRAME, std::min(size, FRAME_LENGTH)) != 0)
        return Found::Broken;
    if (size > FRAME_LENGTH && line[FRAME_LENGTH] != '\n' && line[FRAME_LENGTH] != ' ')
        return Found::Broken;
    const void* const end = std::memchr(line, '\n', size);
    if (!end)
        return size < sizeof(line) ? Found::End : Found::Broken;
    const uint64_t begin = position + static_cast<uint64_t>(static_cast<const char*>(end) - line) + 1;
    const uint64_t whole = source_->size();
    if (whole < begin || whole - begin < format_.layout.bytes())
        return Found::End;
    planes = begin;
    position = begin + format_.layout.bytes();
    return Found::Frame;
}

bool Y4mReader::readPlanes(uint64_t planes, uint8_t* to) const {
    const size_t size = format_.layout.bytes();
    return source_->read(planes, to, size) == static_cast<int64_t>(size);
}

} // namespace cameras
} // namespace ostrel
