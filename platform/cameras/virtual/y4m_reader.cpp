#include "platform/cameras/virtual/y4m_reader.h"

#include "base/y4m_header.h"

#include <algorithm>
#include <cstring>

namespace ostrel {
namespace cameras {

namespace {

const char FRAME[] = "FRAME";
const size_t FRAME_LENGTH = sizeof(FRAME) - 1;

// Longer lines than any program writes: what has no line break by then is not text.
const size_t LONGEST_HEADER = 4096;
const size_t LONGEST_FRAME_LINE = 256;

Chroma chromaOf(Y4mColours colours) {
    switch (colours) {
    case Y4M_420:
        return Chroma::Halved;
    case Y4M_422:
        return Chroma::HalvedColumns;
    case Y4M_444:
        return Chroma::Full;
    case Y4M_MONO:
        break;
    }
    return Chroma::None;
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
    const std::string magic = Y4M_MAGIC;
    if (magic.compare(0, start.size(), start, 0, magic.size()) != 0) // as far as either goes
        return "not a Y4M file: it does not begin with " + magic;
    const size_t end = start.find('\n');
    if (end == std::string::npos)
        return start.size() < LONGEST_HEADER ? "it ends within its header"
                                             : "the header has more than 4096 bytes";
    Y4mHeader header;
    const std::string wrong = parseY4mHeader(start.substr(0, end), header);
    if (!wrong.empty())
        return wrong;
    format_.layout.width = header.width;
    format_.layout.height = header.height;
    format_.layout.chroma = chromaOf(header.colours);
    format_.layout.fullRange = header.fullRange;
    format_.framesPerSecond = static_cast<double>(header.rateNumerator) / header.rateDenominator;
    firstFrame_ = end + 1;
    uint64_t position = firstFrame_, planes = 0;
    const Found found = next(position, planes);
    if (found == Found::Frame)
        return std::string();
    format_ = Y4mFormat();
    return found == Found::End ? "it has no whole frame" : "no FRAME line behind the header";
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
