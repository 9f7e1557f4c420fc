#include "apps/camera/layout.h"

#include "apps/common/failure.h"
#include "apps/common/text.h"

namespace ostrel::apps::cli {

namespace {

struct Name {
    const char* name;
    FileKind kind;
};

const Name NAMES[] = {
    {"argb", {Container::Raw, Layout::Argb}}, {"argb32", {Container::Raw, Layout::Argb}},
    {"bgra", {Container::Raw, Layout::Argb}}, {"rgb24", {Container::Raw, Layout::Rgb24}},
    {"yuy2", {Container::Raw, Layout::Yuy2}}, {"i420", {Container::Raw, Layout::I420}},
    {"y4m", {Container::Y4m, Layout::I420}},  {"png", {Container::Png, Layout::Argb}},
};

} // namespace

std::optional<FileKind> parseFileKind(const std::string& name) {
    const std::string lower = toLower(name);
    for (const Name& known : NAMES)
        if (lower == known.name)
            return known.kind;
    return std::nullopt;
}

std::string suffixOf(const std::string& path) {
    const std::size_t dot = path.find_last_of("./");
    return dot == std::string::npos || path[dot] == '/' ? "" : toLower(path.substr(dot + 1));
}

std::optional<FileKind> fileKindOfPath(const std::string& path) {
    const std::string suffix = suffixOf(path);
    return parseFileKind(suffix == "yuv" ? "i420" : suffix);
}

const char* layoutName(Layout layout) {
    switch (layout) {
    case Layout::Argb:
        return "argb";
    case Layout::Rgb24:
        return "rgb24";
    case Layout::Yuy2:
        return "yuy2";
    case Layout::I420:
        return "i420";
    }
    return "";
}

void requireSize(Layout layout, const Size& size) {
    if (layout == Layout::Yuy2 && !size.even())
        throw Failure(EXIT_USAGE, "yuy2 frames have even sides, " + toString(size) +
                                      " does not: choose another format or size");
}

std::size_t frameBytes(Layout layout, const Size& size) {
    const std::size_t pixels = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    switch (layout) {
    case Layout::Argb:
        return pixels * 4;
    case Layout::Rgb24:
        return pixels * 3;
    case Layout::Yuy2:
        return pixels * 2;
    case Layout::I420:
        return pixels + frameBytes(Layout::Yuy2, {(size.width + 1) / 2, (size.height + 1) / 2});
    }
    return 0;
}

} // namespace ostrel::apps::cli
