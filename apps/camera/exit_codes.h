// The exit codes of ostrel-camera and what they mean. Scripts rely on them: a number never changes its
// meaning.
#ifndef OSTREL_APPS_CAMERA_EXIT_CODES_H
#define OSTREL_APPS_CAMERA_EXIT_CODES_H

#include <string>
#include <vector>

namespace ostrel {
namespace cli {

enum ExitCode {
    EXIT_OK = 0,
    EXIT_INTERNAL = 1,
    EXIT_USAGE = 2,
    EXIT_NO_CAMERA = 3,
    EXIT_NO_SUCH_CAMERA = 4,
    EXIT_CANNOT_OPEN = 5,
    EXIT_NO_FRAME = 6,
    EXIT_FILE = 7,
    EXIT_SIGNAL = 128 // plus the number of the signal
};

struct ExitCodeMeaning {
    std::string code;
    std::string meaning;
};

// In ascending order; help text and manual page are made from it.
const std::vector<ExitCodeMeaning>& exitCodeMeanings();

} // namespace cli
} // namespace ostrel

#endif
