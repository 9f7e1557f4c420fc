#include "apps/camera/help.h"

#include "apps/common/text.h"

namespace ostrel::apps::cli {

namespace {

const std::size_t WIDTH = 96;
const std::size_t INDENT = 2;
const std::size_t COLUMN = 26;

std::string twoColumns(const std::string& left, const std::string& right) {
    std::string out = std::string(INDENT, ' ') + left;
    std::size_t at = INDENT + left.size();
    if (at + 2 > COLUMN) {
        out += "\n";
        at = 0;
    }
    for (const std::string& line : wrapped(right, WIDTH - COLUMN)) {
        out += std::string(COLUMN - at, ' ') + line + "\n";
        at = 0;
    }
    return out;
}

} // namespace

std::string helpSection(const std::string& title, const HelpRows& rows) {
    std::string out;
    for (const auto& [left, right] : rows)
        out += twoColumns(left, right);
    return out.empty() ? out : "\n" + title + ":\n" + out;
}

std::string exitCodesSection() {
    return helpSection(
        "Exit codes",
        {{"0", "done, also when a recording without a limit was ended by Ctrl-C"},
         {"1", "an unexpected failure, such as no memory left"},
         {"2", "wrong usage: an unknown option, a bad value, arguments that do not go together"},
         {"3", "no camera is attached"},
         {"4", "no attached camera is the one asked for, or several are"},
         {"5", "the camera cannot be opened: no permission, in use, unplugged"},
         {"6", "no frame came within the time limit"},
         {"7", "a file cannot be read or written, or has the wrong length"},
         {"8", "doctor found a problem"},
         {"9", "a control was not set, or the camera has none"},
         {"128+N", "ended by signal N before the work was done (130 for Ctrl-C)"}});
}

} // namespace ostrel::apps::cli
