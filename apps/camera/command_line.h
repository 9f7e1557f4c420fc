// The parser of the command line and the texts that explain it.
#ifndef OSTREL_APPS_CAMERA_COMMAND_LINE_H
#define OSTREL_APPS_CAMERA_COMMAND_LINE_H

#include "apps/camera/options.h"

#include <CLI/CLI.hpp>

#include <string>

namespace ostrel {
namespace cli {

// Bound to the options that it fills.
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
