// The kinds of file and the pixel layouts that the commands read and write.
#ifndef OSTREL_APPS_CAMERA_LAYOUT_H
#define OSTREL_APPS_CAMERA_LAYOUT_H

#include "apps/common/size.h"

#include <cstddef>
#include <optional>
#include <string>

namespace ostrel::apps::cli {

// Layouts of one frame without padding, top row first; see OVideoConverter.
enum class Layout { Argb, Rgb24, Yuy2, I420 };

// How frames lie in a file. Y4M frames are I420, PNG pictures are read and written as ARGB.
enum class Container { Raw, Y4m, Png };

struct FileKind {
    Container container = Container::Raw;
    Layout layout = Layout::Argb;
};

// From a name as --from, --to and --format take it, letter case ignored.
std::optional<FileKind> parseFileKind(const std::string& name);
// The accepted names, for messages.
const char FILE_KINDS[] = "png, y4m, i420, yuy2, rgb24, argb (also argb32, bgra)";
std::string suffixOf(const std::string& path); // in lower case, without its dot
// From the suffix of a file name; nothing when it says nothing.
std::optional<FileKind> fileKindOfPath(const std::string& path);

const char* layoutName(Layout layout);
// YUY2 pixels share colour in pairs, so that only frames with even sides exist. Throws a Failure with
// EXIT_USAGE for others.
void requireSize(Layout layout, const Size& size);
// I420 rounds the sides of its colour planes up.
std::size_t frameBytes(Layout layout, const Size& size);

} // namespace ostrel::apps::cli

#endif
