// A tool with all of its help texts.
#ifndef OSTREL_APPS_MANUAL_TOOL_H
#define OSTREL_APPS_MANUAL_TOOL_H

#include "apps/manual/help_text.h"

#include <string>
#include <vector>

namespace ostrel {
namespace manual {

struct CommandHelp {
    std::string name;
    HelpText help;
};

struct Tool {
    std::string name;
    std::string version;
    HelpText help;
    std::vector<CommandHelp> commands; // those that the help lists; empty for a tool without
};

// The manual page in the man macros. prose: sections under lines such as "# DESCRIPTION", paragraphs between
// blank lines, text to be kept as it is indented. DESCRIPTION comes before the options, all others after
// them.
std::string manualPage(const Tool& tool, const std::string& prose);

std::string bashCompletion(const Tool& tool);

} // namespace manual
} // namespace ostrel

#endif
