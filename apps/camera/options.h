// What can be asked for on the command line.
#ifndef OSTREL_APPS_CAMERA_OPTIONS_H
#define OSTREL_APPS_CAMERA_OPTIONS_H

#include "apps/camera/camera_choice.h"
#include "apps/camera/layout.h"
#include "apps/camera/mode_choice.h"
#include "apps/camera/record/recording_kind.h"
#include "apps/camera/y4m.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ostrel::apps::cli {

enum class Command { List, Snapshot, Record, Serve, Watch, Controls, Doctor, Convert, Scale };

struct ListOptions {
    bool json = false;
    bool all = false;
    bool modes = false;
};

struct DoctorOptions {
    bool json = false;
};

struct ControlsOptions {
    std::vector<std::string> settings; // NAME=VALUE
    bool json = false;
    std::string save; // files; empty: not given
    std::string load;
};

struct SnapshotOptions {
    std::string output = "snapshot.png";
    uint64_t skip = 0;
    std::optional<int> quality;  // of JPEG, 1 to 100
    std::optional<double> every; // seconds: a series
};

struct LimitOptions {
    std::optional<uint64_t> frames;
    std::optional<double> seconds;
    std::optional<double> reconnect; // so many seconds at most
};

struct RecordOptions {
    std::string output;
    std::optional<RecordingKind> format;
    std::optional<VIDEO_QUALITY> scale;
    std::optional<Rate> rate;
    std::optional<int> quality; // of JPEG, 1 to 100
};

struct ServeOptions {
    uint16_t port = 8080;       // 0: any
    std::optional<int> quality; // of JPEG, 1 to 100
};

struct FileOptions { // convert and scale
    std::string input;
    std::string output;
    std::optional<FileKind> from;
    std::optional<FileKind> to;
    std::optional<Size> size;
    std::optional<uint64_t> frame; // from 1
    bool bottomUp = false;
};

struct Options {
    Command command = Command::List;
    bool quiet = false;
    bool verbose = false;
    CameraOptions camera;
    std::optional<Size> captureSize;
    std::optional<WantedMode> mode; // snapshot, record and watch
    LimitOptions limit;
    ScaleMethod filter = SCALE_METHOD_BOX;
    std::optional<VIDEO_QUALITY> scaleTo;
    ListOptions list;
    ControlsOptions controls;
    DoctorOptions doctor;
    SnapshotOptions snapshot;
    RecordOptions record;
    ServeOptions serve;
    FileOptions files;

    // Of the frames that are captured.
    Size size() const {
        const Size native = mode ? mode->size : Size();
        return captureSize.value_or(native.empty() ? sizeOf(VIDEO_QUALITY_SD) : native);
    }
};

} // namespace ostrel::apps::cli

#endif
