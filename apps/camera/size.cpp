#include "apps/camera/size.h"

#include "apps/camera/text.h"

#include <charconv>

namespace ostrel {
namespace cli {

namespace {

// The whole text as a side of a frame; 0 when it is none.
int parseExtent(const std::string& text) {
    int value = 0;
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, value);
    const bool valid = result.ec == std::errc() && result.ptr == end && value > 0 && value <= MAXIMUM_EXTENT;
    return valid ? value : 0;
}

} // namespace

std::optional<VIDEO_QUALITY> parseLevel(const std::string& text) {
    const std::string name = toLower(text);
    if (name == "ld")
        return VIDEO_QUALITY_LD;
    if (name == "sd")
        return VIDEO_QUALITY_SD;
    if (name == "hd")
        return VIDEO_QUALITY_HD;
    return std::nullopt;
}

std::optional<Size> parseSize(const std::string& text) {
    if (const std::optional<VIDEO_QUALITY> level = parseLevel(text))
        return sizeOf(*level);
    const std::size_t cross = text.find_first_of("xX");
    if (cross == std::string::npos)
        return std::nullopt;
    Size size;
    size.width = parseExtent(text.substr(0, cross));
    size.height = parseExtent(text.substr(cross + 1));
    return size.empty() ? std::nullopt : std::optional<Size>(size);
}

Size sizeOf(VIDEO_QUALITY level) {
    Size size;
    OVideoCommon::qualityToResolution(level, size.width, size.height);
    return size;
}

std::optional<VIDEO_QUALITY> levelOf(const Size& size) {
    const int level = OVideoCommon::resolutionToQuality(size.width, size.height);
    return level < 0 ? std::nullopt : std::optional<VIDEO_QUALITY>(static_cast<VIDEO_QUALITY>(level));
}

std::string toString(const Size& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

} // namespace cli
} // namespace ostrel
