#include "apps/camera/layout.h"

#include "apps/camera/text.h"

namespace ostrel {
namespace cli {

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

const char* fileKindNames() {
    return "argb (also argb32, bgra), rgb24, yuy2, i420, y4m, png";
}

std::optional<FileKind> fileKindOfPath(const std::string& path) {
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/')
        return std::nullopt;
    const std::string suffix = toLower(path.substr(dot + 1));
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

bool needsEvenSize(Layout layout) {
    return layout == Layout::Yuy2 || layout == Layout::I420;
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
        return pixels * 3 / 2;
    }
    return 0;
}

} // namespace cli
} // namespace ostrel
