#include "apps/camera/help.h"

#include "apps/camera/exit_codes.h"
#include "apps/camera/text.h"

#include <algorithm>
#include <cctype>

namespace ostrel {
namespace cli {

const char CAMERA_GROUP[] = "Camera options";
const char GENERAL_GROUP[] = "General options";

namespace {

const std::size_t WIDTH = 96;
const std::size_t INDENT = 2;
const std::size_t COLUMN = 26;
const char OWN_GROUP[] = "Options"; // the parser's name for options without a group

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

OptionText textOf(const CLI::Option& option) {
    OptionText text;
    for (const std::string& name : option.get_snames())
        text.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        text.names.push_back("--" + name);
    if (option.get_positional())
        text.names = {upper(option.get_name(true, false))};
    else if (option.get_type_size() != 0)
        text.argument = option.get_type_name();
    text.description = option.get_description();
    text.required = option.get_required();
    return text;
}

// "  left                  right", the right side wrapped.
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

std::string section(const std::string& title, const std::vector<OptionText>& options) {
    std::string out;
    for (const OptionText& option : options) {
        const std::string argument = option.argument.empty() ? "" : " " + option.argument;
        out += twoColumns(join(option.names, ", ") + argument, option.description);
    }
    return out.empty() ? out : "\n" + title + ":\n" + out;
}

std::string commandsSection(const CLI::App& app) {
    std::string out;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        out += twoColumns(command->get_name(), command->get_description());
    return out.empty() ? out
                       : "\nCommands:\n" + out + "\n'ostrel-camera COMMAND --help' explains one of them.\n";
}

std::string exitCodesSection() {
    std::string out = "\nExit codes:\n";
    for (const ExitCodeMeaning& code : exitCodeMeanings())
        out += twoColumns(code.code, code.meaning);
    return out;
}

} // namespace

std::vector<OptionText> positionals(const CLI::App& app) {
    std::vector<OptionText> texts;
    for (const CLI::Option* option : app.get_options())
        if (option->get_positional())
            texts.push_back(textOf(*option));
    return texts;
}

std::vector<OptionText> optionsOfGroup(const CLI::App& app, const std::string& group) {
    std::vector<OptionText> texts;
    for (const CLI::Option* option : app.get_options())
        if (!option->get_positional() && option->get_group() == group)
            texts.push_back(textOf(*option));
    return texts;
}

std::vector<std::string> sharedGroups(const CLI::App& command) {
    // Commands with arguments work on files.
    if (command.get_parent() && !positionals(command).empty())
        return {GENERAL_GROUP};
    return {CAMERA_GROUP, GENERAL_GROUP};
}

std::string usageOf(const CLI::App& app) {
    if (!app.get_parent())
        return app.get_name() + " COMMAND [OPTIONS]";
    std::string usage = app.get_parent()->get_name() + " " + app.get_name() + " [OPTIONS]";
    for (const OptionText& option : optionsOfGroup(app, OWN_GROUP))
        if (option.required)
            usage += " " + option.names.back() + " " + option.argument;
    for (const OptionText& argument : positionals(app))
        usage += " " + argument.names.front();
    return usage;
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const {
    const CLI::App& shared = app->get_parent() ? *app->get_parent() : *app;
    std::string out = app->get_description() + "\n\nUsage: " + usageOf(*app) + "\n";
    out += commandsSection(*app);
    out += section("Arguments", positionals(*app));
    out += section("Options", optionsOfGroup(*app, OWN_GROUP));
    for (const std::string& group : sharedGroups(*app))
        out += section(group, optionsOfGroup(shared, group));
    if (!app->get_parent())
        out += exitCodesSection();
    return out + "\n" + app->get_footer();
}

} // namespace cli
} // namespace ostrel
