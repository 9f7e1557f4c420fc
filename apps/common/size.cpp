#include "apps/common/size.h"

#include "apps/common/text.h"

#include <charconv>

namespace ostrel::apps {

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

std::optional<Size> parseSize(const std::string& text) {
    static const struct {
        const char* name;
        Size size;
    } NAMED[] = {{"ld", {320, 240}},      {"sd", {640, 480}},     {"hd", {1280, 720}},
                 {"240p", {320, 240}},    {"480p", {640, 480}},   {"720p", {1280, 720}},
                 {"1080p", {1920, 1080}}, {"2160p", {3840, 2160}}};
    const std::string name = toLower(text);
    for (const auto& named : NAMED)
        if (name == named.name)
            return named.size;
    const std::size_t cross = name.find('x');
    if (cross == std::string::npos)
        return std::nullopt;
    const Size size = {parseExtent(name.substr(0, cross)), parseExtent(name.substr(cross + 1))};
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

} // namespace ostrel::apps
