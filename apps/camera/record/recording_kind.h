// The kinds of file that record writes.
#ifndef OSTREL_APPS_CAMERA_RECORD_RECORDING_KIND_H
#define OSTREL_APPS_CAMERA_RECORD_RECORDING_KIND_H

#include "apps/camera/layout.h"

namespace ostrel::apps::cli {

struct RecordingKind {
    bool matroska = false; // with JPEG pictures
    FileKind frames;       // else
};

// From a name as --format takes it, letter case ignored.
std::optional<RecordingKind> parseRecordingKind(const std::string& name);
// The accepted names, for messages.
const char RECORDING_KINDS[] = "mkv, y4m, i420, yuy2, rgb24, argb (also argb32, bgra)";
// From the suffix of a file name; nothing when it says nothing.
std::optional<RecordingKind> recordingKindOfPath(const std::string& path);

} // namespace ostrel::apps::cli

#endif
