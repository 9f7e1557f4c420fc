#include "apps/common/text.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <cstdio>
#include <locale>
#include <sstream>
#include <wchar.h>

namespace ostrel::apps {

std::string toLower(const std::string& text) {
    std::string lower = text;
    for (char& letter : lower)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return lower;
}

std::string join(const std::vector<std::string>& parts, const std::string& between) {
    std::string text;
    for (const std::string& part : parts)
        text += (&part == &parts.front() ? "" : between) + part;
    return text;
}

std::string quoted(const std::string& text) {
    return "'" + printable(text) + "'";
}

std::string fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

// Not std::from_chars(), which has no fractions in the standard library of macOS.
bool parseDecimal(const std::string& text, double& number) {
    if (text.empty() || text[0] == '+' || text.find_first_not_of("0123456789.eE+-") != std::string::npos)
        return false;
    std::istringstream from(text);
    from.imbue(std::locale::classic());
    return from >> number && from.peek() == std::istringstream::traits_type::eof();
}

std::string counted(unsigned long long number, const std::string& noun) {
    return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

std::string printable(const std::string& utf8) {
    QString text = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
    for (QChar& letter : text)
        if (letter.category() == QChar::Other_Control || letter.category() == QChar::Other_Format)
            letter = QLatin1Char('?');
    return text.toStdString();
}

std::size_t displayWidth(const std::string& utf8) {
    std::size_t columns = 0;
    const auto letters = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size())).toUcs4();
    for (const auto letter : letters) {
        // -1: not printable, or the locale does not know it; it is still shown as something.
        const int width = wcwidth(static_cast<wchar_t>(letter));
        columns += width < 0 ? 1U : static_cast<std::size_t>(width);
    }
    return columns;
}

std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> lines;
    std::istringstream paragraphs(text);
    for (std::string paragraph; std::getline(paragraphs, paragraph);) {
        std::istringstream words(paragraph);
        std::string line;
        for (std::string word; words >> word;) {
            if (!line.empty() && displayWidth(line) + 1 + displayWidth(word) > width) {
                lines.push_back(line);
                line.clear();
            }
            line += (line.empty() ? "" : " ") + word;
        }
        lines.push_back(line);
    }
    return lines;
}

} // namespace ostrel::apps
