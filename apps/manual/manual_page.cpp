#include "apps/manual/tool.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace ostrel {
namespace manual {

namespace {

const char OWN_OPTIONS[] = "Options";

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

// Text that troff shows as it stands.
std::string escaped(const std::string& text) {
    std::string out;
    for (const char letter : text) {
        if (letter == '\\')
            out += "\\e";
        else if (letter == '-')
            out += "\\-";
        else if (letter == '\'' || letter == '`' || letter == '^' || letter == '~' || letter == '"')
            out += letter == '\''  ? "\\(aq"
                   : letter == '`' ? "\\(ga"
                   : letter == '^' ? "\\(ha"
                   : letter == '~' ? "\\(ti"
                                   : "\\(dq";
        else
            out += letter;
    }
    const bool control = !out.empty() && out[0] == '.';
    return (control ? "\\&" : "") + out;
}

// Names of options bold, what stands for a value italic.
std::string markedTerm(const std::string& term) {
    std::istringstream words(term);
    std::string out;
    for (std::string word; words >> word;) {
        out += out.empty() ? "" : " ";
        const bool comma = word.back() == ',';
        const std::string bare = comma ? word.substr(0, word.size() - 1) : word;
        if (bare[0] == '-')
            out += "\\fB" + escaped(bare) + "\\fR";
        else if (bare[0] == '<')
            out += "\\fI" + escaped(bare.substr(1, bare.size() - 2)) + "\\fR";
        else
            out += "\\fI" + escaped(bare) + "\\fR";
        out += comma ? "," : "";
    }
    return out;
}

std::string entries(const Section& section) {
    std::string out;
    for (const Entry& entry : section.entries)
        out += ".TP\n" + markedTerm(entry.term) + "\n" + escaped(entry.text) + "\n";
    return out;
}

std::string verbatim(const std::vector<std::string>& lines) {
    std::string out = ".PP\n.nf\n.RS 4\n";
    for (const std::string& line : lines)
        out += escaped(line) + "\n";
    return out + ".RE\n.fi\n";
}

std::string header(const Tool& tool) {
    std::string summary = tool.help.summary;
    summary[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(summary[0])));
    if (summary.back() == '.')
        summary.pop_back();
    std::string out = ".TH " + upper(tool.name) + " 1 \"\" \"" + tool.name + " " + tool.version +
                      "\" \"User Commands\"\n.SH NAME\n" + escaped(tool.name) + " \\- " + escaped(summary) +
                      "\n.SH SYNOPSIS\n.nf\n";
    for (const CommandHelp& command : tool.commands)
        for (const std::string& usage : command.help.usage)
            out += escaped(usage) + "\n";
    if (tool.commands.empty())
        for (const std::string& usage : tool.help.usage)
            out += escaped(usage) + "\n";
    return out + ".fi\n";
}

std::string commandSection(const CommandHelp& command) {
    std::string out = ".SS " + command.name + "\n" + escaped(command.help.summary) + "\n";
    for (const char* title : {"Arguments", OWN_OPTIONS})
        if (const Section* section = command.help.section(title))
            out += entries(*section);
    for (const std::string& note : command.help.notes)
        out += ".PP\n" + escaped(note) + "\n";
    if (const Section* examples = command.help.section("Examples"))
        out += verbatim(examples->lines);
    return out;
}

// Of the tool itself: everything but the list of commands.
std::string ownSections(const Tool& tool) {
    std::string out;
    for (const Section& section : tool.help.sections) {
        if (section.title == "Commands")
            continue;
        const std::string title = section.title == "Exit codes" ? "EXIT STATUS" : upper(section.title);
        out += ".SH " + title + "\n" + (section.lines.empty() ? entries(section) : verbatim(section.lines));
    }
    return out;
}

struct Prose {
    std::string description;
    std::string rest;
};

Prose laidOut(const std::string& text) {
    Prose prose;
    std::string* out = &prose.rest;
    std::vector<std::string> kept;
    const auto endKept = [&] {
        if (!kept.empty())
            *out += verbatim(kept);
        kept.clear();
    };
    std::istringstream lines(text);
    bool fresh = true;
    for (std::string line; std::getline(lines, line);) {
        if (line.compare(0, 4, "    ") == 0) {
            kept.push_back(line.substr(4));
            continue;
        }
        endKept();
        if (line.compare(0, 2, "# ") == 0) {
            out = line == "# DESCRIPTION" ? &prose.description : &prose.rest;
            *out += ".SH " + line.substr(2) + "\n";
            fresh = true;
        } else if (line.empty()) {
            fresh = false;
        } else {
            *out += (fresh ? "" : ".PP\n") + escaped(line) + "\n";
            fresh = true; // the next line goes on with the paragraph
        }
    }
    endKept();
    return prose;
}

} // namespace

std::string manualPage(const Tool& tool, const std::string& prose) {
    const Prose laid = laidOut(prose);
    std::string out = header(tool) + laid.description;
    if (!tool.commands.empty())
        out += ".SH COMMANDS\n";
    for (const CommandHelp& command : tool.commands)
        out += commandSection(command);
    return out + ownSections(tool) + laid.rest;
}

} // namespace manual
} // namespace ostrel
