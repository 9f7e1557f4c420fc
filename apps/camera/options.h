// The command line: what can be asked for, and the texts that explain it.
#ifndef OSTREL_APPS_CAMERA_OPTIONS_H
#define OSTREL_APPS_CAMERA_OPTIONS_H

#include "apps/camera/camera_choice.h"
#include "apps/camera/layout.h"
#include "apps/camera/y4m.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {
namespace cli {

enum class Command { List, Snapshot, Record, Watch, Convert, Scale };

struct ListOptions {
    bool json = false;
};

struct SnapshotOptions {
    std::string output = "snapshot.png";
    uint64_t skip = 0;
};

struct LimitOptions {
    std::optional<uint64_t> frames;
    std::optional<double> seconds;
};

struct RecordOptions {
    std::string output;
    std::optional<FileKind> format;
    std::optional<VIDEO_QUALITY> scale;
    std::optional<Rate> rate;
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
    LimitOptions limit;
    ScaleMethod filter = SCALE_METHOD_BOX;
    std::optional<VIDEO_QUALITY> scaleTo;
    ListOptions list;
    SnapshotOptions snapshot;
    RecordOptions record;
    FileOptions files;

    Size size() const { return captureSize.value_or(sizeOf(VIDEO_QUALITY_SD)); }
};

// The parser with its texts, bound to the options that it fills.
class CommandLine {
public:
    CommandLine();
    ~CommandLine();

    // Empty when there is something to do. Otherwise the text to print on standard output, for --help and
    // --version. Throws a Failure with EXIT_USAGE.
    std::string parse(int argc, const char* const* argv);
    const Options& options() const { return options_; }

    // For the manual page and the shell completion.
    const CLI::App& app() const { return app_; }

private:
    void addCommonOptions();
    void addList();
    void addSnapshot();
    void addRecord();
    void addWatch();
    void addConvert();
    void addScale();
    void addSize(CLI::App* command);
    void addLimits(CLI::App* command);
    void addFilter(CLI::App* command);
    void addFiles(CLI::App* command);
    CLI::App* addCommand(Command command, const char* name, const char* summary);
    void check() const;

    CLI::App app_;
    Options options_;
};

} // namespace cli
} // namespace ostrel

#endif
