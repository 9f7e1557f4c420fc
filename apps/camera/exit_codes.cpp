#include "apps/camera/exit_codes.h"

namespace ostrel {
namespace cli {

const std::vector<ExitCodeMeaning>& exitCodeMeanings() {
    static const std::vector<ExitCodeMeaning> meanings = {
        {"0", "done, also when a recording without a limit was ended by Ctrl-C"},
        {"1", "an unexpected failure, such as no memory left"},
        {"2", "wrong usage: an unknown option, a bad value, arguments that do not go together"},
        {"3", "no camera is attached"},
        {"4", "no attached camera is the one asked for, or several are"},
        {"5", "the camera cannot be opened: no permission, in use, unplugged"},
        {"6", "no frame came within the time limit"},
        {"7", "a file cannot be read or written, or has the wrong length"},
        {"128+N", "ended by signal N before the work was done (130 for Ctrl-C)"},
    };
    return meanings;
}

} // namespace cli
} // namespace ostrel
