// The help text of a tool, taken apart. It is the one source of manual page and shell completion.
#ifndef OSTREL_APPS_MANUAL_HELP_TEXT_H
#define OSTREL_APPS_MANUAL_HELP_TEXT_H

#include <string>
#include <vector>

namespace ostrel {
namespace manual {

// "  -o, --output FILE    What it does." with the lines that continue it.
struct Entry {
    std::string term;
    std::string text;
};

// What stands under a line such as "Camera options:".
struct Section {
    std::string title; // without the colon
    std::vector<Entry> entries;
    std::vector<std::string> lines; // as they are: examples
};

struct HelpText {
    std::string summary;
    std::vector<std::string> usage; // without "Usage:" and the folder of the program
    std::vector<std::string> notes; // paragraphs between and behind the sections
    std::vector<Section> sections;

    const Section* section(const std::string& title) const; // null when there is none
};

HelpText parseHelp(const std::string& text);

// "--output" and "-o" of the term above; empty for a term that is no option.
std::vector<std::string> optionNames(const std::string& term);
// "FILE"; empty for a flag.
std::string optionArgument(const std::string& term);

} // namespace manual
} // namespace ostrel

#endif
