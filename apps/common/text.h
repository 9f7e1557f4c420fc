// Small helpers for text that people read.
#ifndef OSTREL_APPS_COMMON_TEXT_H
#define OSTREL_APPS_COMMON_TEXT_H

#include <string>
#include <vector>

namespace ostrel::apps {

std::string toLower(const std::string& text); // ASCII letters
std::string join(const std::vector<std::string>& parts, const std::string& between);
std::string quoted(const std::string& text); // 'text', made printable
std::string fixed(double value, int decimals);
// A number such as 30, 29.97 or 1e3 and nothing else, whatever the locale is.
bool parseDecimal(const std::string& text, double& number);

// "1 frame", "2 frames": the plural is the noun with an s.
std::string counted(unsigned long long number, const std::string& noun);

// One printable line: control characters become '?', so that a camera's name cannot drive the terminal.
std::string printable(const std::string& utf8);

// Columns that the text takes on a terminal, after std::setlocale(LC_CTYPE, "").
std::size_t displayWidth(const std::string& utf8);

// Words of text in lines of at most width columns, where words allow; line breaks in text are kept.
std::vector<std::string> wrapped(const std::string& text, std::size_t width);

} // namespace ostrel::apps

#endif
