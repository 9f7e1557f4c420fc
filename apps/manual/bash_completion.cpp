#include "apps/manual/tool.h"

#include <algorithm>

namespace ostrel {
namespace manual {

namespace {

std::string functionName(const std::string& tool) {
    std::string name = "_" + tool;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

// Entries that are options, of every section.
std::vector<Entry> options(const HelpText& help) {
    std::vector<Entry> found;
    for (const Section& section : help.sections)
        for (const Entry& entry : section.entries)
            if (!optionNames(entry.term).empty())
                found.push_back(entry);
    return found;
}

std::string words(const HelpText& help) {
    std::string out;
    for (const Entry& entry : options(help))
        for (const std::string& name : optionNames(entry.term))
            out += (out.empty() ? "" : " ") + name;
    return out;
}

// How the value of an option is completed, by what stands for it in the help.
std::string valueWords(const std::string& argument) {
    if (argument == "SIZE" || argument == "LEVEL")
        return "-W 'ld sd hd'";
    if (argument == "FORMAT")
        return "-W 'y4m png argb argb32 bgra rgb24 yuy2 i420'";
    if (argument == "FILTER")
        return "-W 'none bilinear box'";
    if (argument == "CAMERA" || argument == "NAME")
        // compgen expands its words as the shell does, so that only harmless identifiers may reach it.
        return "-W \"$(ostrel-camera list --json 2>/dev/null | "
               "sed -n 's/^ *\"id\": \"\\([A-Za-z0-9._:@/+-]*\\)\",*$/\\1/p')\"";
    if (argument == "FILE")
        return "-f";
    return "-W ''"; // a number: nothing to offer
}

std::string valueCases(const Tool& tool) {
    std::vector<Entry> all = options(tool.help);
    for (const CommandHelp& command : tool.commands)
        for (const Entry& entry : options(command.help))
            all.push_back(entry);
    std::string out;
    std::vector<std::string> seen;
    for (const Entry& entry : all) {
        const std::string argument = optionArgument(entry.term);
        std::string pattern;
        for (const std::string& name : optionNames(entry.term))
            pattern += (pattern.empty() ? "" : "|") + name;
        if (argument.empty() || std::find(seen.begin(), seen.end(), pattern) != seen.end())
            continue;
        seen.push_back(pattern);
        out += "    " + pattern + ")\n        COMPREPLY=($(compgen " + valueWords(argument) +
               " -- \"$current\"))\n        return ;;\n";
    }
    return out;
}

std::string commandCases(const Tool& tool) {
    std::string names;
    std::string out;
    for (const CommandHelp& command : tool.commands) {
        names += (names.empty() ? "" : " ") + command.name;
        const bool files = command.help.section("Arguments") != nullptr;
        out += "    " + command.name + ") words='" + words(command.help) + "'" + (files ? " files=1" : "") +
               " ;;\n";
    }
    const std::string first = names.empty() ? words(tool.help) : names + " " + words(tool.help);
    return out + "    *) words='" + first + "' ;;\n";
}

std::string commandPattern(const Tool& tool) {
    std::string pattern;
    for (const CommandHelp& command : tool.commands)
        pattern += (pattern.empty() ? "" : "|") + command.name;
    return pattern.empty() ? "''" : pattern;
}

} // namespace

std::string bashCompletion(const Tool& tool) {
    const std::string function = functionName(tool.name);
    return "# bash completion for " + tool.name + "\n" + function +
           "() {\n"
           "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command= files= "
           "word "
           "words\n"
           "    COMPREPLY=()\n"
           "    case $previous in\n" +
           valueCases(tool) +
           "    esac\n"
           "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        case $word in " +
           commandPattern(tool) +
           ") command=$word; break ;; esac\n"
           "    done\n"
           "    case $command in\n" +
           commandCases(tool) +
           "    esac\n"
           "    if [[ -n $files && $current != -* ]]; then\n"
           "        COMPREPLY=($(compgen -f -- \"$current\"))\n"
           "    else\n"
           "        COMPREPLY=($(compgen -W \"$words\" -- \"$current\"))\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F " +
           function + " " + tool.name + "\n";
}

} // namespace manual
} // namespace ostrel
