#include "apps/manual/help_text.h"

#include <sstream>

namespace ostrel {
namespace manual {

namespace {

const char USAGE[] = "Usage: ";
const char EXAMPLES[] = "Examples";

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? std::string()
                                      : text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

// The tool may have been started by its whole path.
std::string withoutFolder(const std::string& usage) {
    const std::size_t slash = usage.substr(0, usage.find(' ')).rfind('/');
    return slash == std::string::npos ? usage : usage.substr(slash + 1);
}

void append(std::string& text, const std::string& more) {
    text += (text.empty() || more.empty() ? "" : " ") + more;
}

// Reads line by line. A line at the left edge begins a section or belongs to a paragraph; others belong to
// the section.
class Parser {
public:
    HelpText parse(const std::string& text) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);)
            take(line);
        endParagraph();
        return help_;
    }

private:
    void take(const std::string& line) {
        if (line.empty())
            endParagraph();
        else if (startsWith(line, USAGE))
            help_.usage.push_back(withoutFolder(line.substr(sizeof USAGE - 1)));
        else if (line[0] != ' ' && line.back() == ':')
            help_.sections.push_back({line.substr(0, line.size() - 1), {}, {}});
        else if (line[0] != ' ')
            append(paragraph_, line);
        else if (!help_.sections.empty())
            takeSectionLine(help_.sections.back(), line);
    }

    static void takeSectionLine(Section& section, const std::string& line) {
        if (section.title == EXAMPLES) {
            section.lines.push_back(trimmed(line));
            return;
        }
        const std::size_t indent = line.find_first_not_of(' ');
        const std::string content = trimmed(line);
        if (indent > 4 && !section.entries.empty()) {
            append(section.entries.back().text, content);
            return;
        }
        const std::size_t gap = content.find("  ");
        section.entries.push_back(
            {content.substr(0, gap), gap == std::string::npos ? "" : trimmed(content.substr(gap))});
    }

    void endParagraph() {
        if (paragraph_.empty())
            return;
        if (help_.summary.empty())
            help_.summary = paragraph_;
        else
            help_.notes.push_back(paragraph_);
        paragraph_.clear();
    }

    HelpText help_;
    std::string paragraph_;
};

} // namespace

const Section* HelpText::section(const std::string& title) const {
    for (const Section& candidate : sections)
        if (candidate.title == title)
            return &candidate;
    return nullptr;
}

HelpText parseHelp(const std::string& text) {
    return Parser().parse(text);
}

std::vector<std::string> optionNames(const std::string& term) {
    std::vector<std::string> names;
    std::istringstream words(term);
    for (std::string word; words >> word;)
        if (word[0] == '-' && word.size() > 1)
            names.push_back(word.back() == ',' ? word.substr(0, word.size() - 1) : word);
    return names;
}

std::string optionArgument(const std::string& term) {
    std::istringstream words(term);
    for (std::string word; words >> word;)
        if (word[0] == '<') // as some parsers write it
            return word.substr(1, word.size() - 2);
        else if (word[0] != '-')
            return word;
    return std::string();
}

} // namespace manual
} // namespace ostrel
