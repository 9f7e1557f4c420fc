// The help texts, laid out for a terminal, and the facts in them for whoever lays them out otherwise.
#ifndef OSTREL_APPS_CAMERA_HELP_H
#define OSTREL_APPS_CAMERA_HELP_H

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace ostrel {
namespace cli {

// Groups of the options that every command understands.
extern const char CAMERA_GROUP[];
extern const char GENERAL_GROUP[];

struct OptionText {
    std::vector<std::string> names; // "-o", "--output"; the bare name of a positional argument
    std::string argument;           // "FILE"; empty for a flag
    std::string description;
    bool required = false;
};

std::vector<OptionText> positionals(const CLI::App& app);
// In the order in which they were added.
std::vector<OptionText> optionsOfGroup(const CLI::App& app, const std::string& group);
// The groups of the program's options that the command uses.
std::vector<std::string> sharedGroups(const CLI::App& command);
// "ostrel-camera convert [OPTIONS] INPUT OUTPUT"
std::string usageOf(const CLI::App& app);

class HelpFormatter : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

} // namespace cli
} // namespace ostrel

#endif
