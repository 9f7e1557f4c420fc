#include "apps/common/suggestion.h"

#include "apps/common/text.h"

#include <algorithm>

namespace ostrel::apps {

namespace {

// What other programs call the same.
const char* const OTHER_NAMES[][2] = {
    {"ls", "list"},
    {"devices", "list"},
    {"photo", "snapshot"},
    {"picture", "snapshot"},
    {"capture", "snapshot"},
    {"video", "record"},
    {"resize", "scale"},
    {"--fps", "--rate"},
    {"--framerate", "--rate"},
    {"--resolution", "--size"},
    {"--device", "--camera"},
    {"--count", "--frames"},
    {"--time", "--duration"},
    {"--out", "--output"},
    {"--input", "--play"},
    {"--loop", "--play"},
};

// Letters to insert, remove, replace, or swap with the next one.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> steps(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                steps[i][j] = i + j;
                continue;
            }
            const std::size_t replaced = steps[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            steps[i][j] = std::min({steps[i - 1][j] + 1, steps[i][j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                steps[i][j] = std::min(steps[i][j], steps[i - 2][j - 2] + 1);
        }
    return steps[a.size()][b.size()];
}

} // namespace

std::string suggestion(const std::string& text, const std::vector<std::string>& known) {
    const std::string wanted = toLower(text.substr(0, text.find('=')));
    std::string best;
    std::size_t least = std::min<std::size_t>(3, wanted.size() / 2);
    for (const std::string& name : known) {
        bool same = wanted.size() > 2 && name.compare(0, wanted.size(), wanted) == 0;
        for (const auto& other : OTHER_NAMES)
            same = same || (wanted == other[0] && name == other[1]);
        const std::size_t steps = same ? 0 : distance(wanted, name);
        if (steps < least || (same && least > 0)) {
            best = name;
            least = steps;
        }
    }
    return best;
}

} // namespace ostrel::apps
