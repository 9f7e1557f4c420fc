#include "apps/camera/help_formatter.h"

#include "apps/camera/help.h"
#include "apps/common/text.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace ostrel::apps::cli {

std::vector<std::string> namesOf(const CLI::Option& option) {
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames())
        names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        names.push_back("--" + name);
    return names;
}

namespace {

const char OWN_GROUP[] = "Options"; // the parser's name for options without a group

class HelpFormatter : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

bool isArgument(const CLI::Option* option) {
    return option->get_positional() && option->get_lnames().empty();
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? char(letter - 'a' + 'A') : letter;
    });
    return text;
}

// "INPUT", or what it is made of where it may be left out: "NAME=VALUE"
std::string argumentName(const CLI::Option* option) {
    return option->get_required() ? upper(option->get_name(true)) : option->get_type_name();
}

HelpRows rowsOf(const CLI::App& app, const std::function<bool(const CLI::Option*)>& shown) {
    HelpRows rows;
    for (const CLI::Option* option : app.get_options(shown)) {
        const std::string left = isArgument(option) ? argumentName(option) : join(namesOf(*option), ", ");
        const bool takesValue = !isArgument(option) && option->get_type_size() != 0;
        rows.emplace_back(left + (takesValue ? " " + option->get_type_name() : ""),
                          option->get_description());
    }
    return rows;
}

HelpRows groupOf(const CLI::App& app, const std::string& group) {
    return rowsOf(app, [&group](const CLI::Option* option) {
        return !isArgument(option) && option->get_group() == group;
    });
}

// "ostrel-camera scale [OPTIONS] --scale LEVEL INPUT OUTPUT"
std::string usageOf(const CLI::App& app) {
    if (!app.get_parent())
        return app.get_name() + " COMMAND [OPTIONS]";
    std::string usage = app.get_parent()->get_name() + " " + app.get_name() + " [OPTIONS]";
    for (const CLI::Option* option : app.get_options())
        if (!isArgument(option) && option->get_required())
            usage += " " + namesOf(*option).back() + " " + option->get_type_name();
    for (const CLI::Option* option : app.get_options())
        if (isArgument(option))
            usage +=
                " " + (option->get_required() ? argumentName(option) : "[" + argumentName(option) + "...]");
        else if (option->get_positional())
            usage += " [" + option->get_type_name() + "]";
    return usage;
}

bool worksOnFiles(const CLI::App& command) {
    return command.get_option_no_throw("input") != nullptr;
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const {
    const CLI::App* shared = app->get_parent() ? app->get_parent() : app;
    HelpRows commands;
    for (const CLI::App* command : app->get_subcommands([](const CLI::App*) { return true; }))
        commands.emplace_back(command->get_name(), command->get_description());
    std::string out = app->get_description() + "\n\nUsage: " + usageOf(*app) + "\n";
    out += helpSection("Commands", commands);
    if (!commands.empty())
        out += "\n'ostrel-camera COMMAND --help' explains one of them.\n";
    out += helpSection("Arguments", rowsOf(*app, isArgument));
    out += helpSection("Options", groupOf(*app, OWN_GROUP));
    if (!worksOnFiles(*app))
        out += helpSection(CAMERA_GROUP, groupOf(*shared, CAMERA_GROUP));
    out += helpSection(GENERAL_GROUP, groupOf(*shared, GENERAL_GROUP));
    if (!app->get_parent())
        out += exitCodesSection();
    return out + "\n" + app->get_footer();
}

} // namespace

std::shared_ptr<CLI::FormatterBase> makeHelpFormatter() {
    return std::make_shared<HelpFormatter>();
}

} // namespace ostrel::apps::cli
