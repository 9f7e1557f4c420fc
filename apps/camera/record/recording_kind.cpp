#include "apps/camera/record/recording_kind.h"

#include "apps/common/text.h"

namespace ostrel::apps::cli {

namespace {

std::optional<RecordingKind> kindOf(const std::string& name, const std::optional<FileKind>& frames) {
    if (name == "mkv")
        return RecordingKind{true, FileKind()};
    return frames ? std::optional<RecordingKind>({false, *frames}) : std::nullopt;
}

} // namespace

std::optional<RecordingKind> parseRecordingKind(const std::string& name) {
    return kindOf(toLower(name), parseFileKind(name));
}

std::optional<RecordingKind> recordingKindOfPath(const std::string& path) {
    return kindOf(suffixOf(path), fileKindOfPath(path));
}

} // namespace ostrel::apps::cli
