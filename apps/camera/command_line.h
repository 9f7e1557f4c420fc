// The parser of the command line and the texts that explain it.
#ifndef OSTREL_APPS_CAMERA_COMMAND_LINE_H
#define OSTREL_APPS_CAMERA_COMMAND_LINE_H

#include "apps/camera/options.h"

#include <string>

namespace ostrel::apps::cli {

// Something to do, or a text to print.
struct Request {
    std::optional<Options> options;
    std::string answer; // for standard output, or for standard error when the exit code is not 0
    int exitCode = 0;
};

// Throws a Failure with EXIT_USAGE.
Request parseCommandLine(int argc, const char* const* argv);

} // namespace ostrel::apps::cli

#endif
