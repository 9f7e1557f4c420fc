#include "apps/camera/progress.h"

#include "apps/common/text.h"

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

const std::chrono::milliseconds BETWEEN_DRAWINGS(100);
// Work that is done before this shows nothing.
const std::chrono::milliseconds BEFORE_FIRST(400);
const char CLEAR_LINE[] = "\r\033[K";
const int BAR_CELLS = 30;

} // namespace

std::string progressLine(double fraction, const std::string& text, int columns) {
    std::string line;
    if (fraction >= 0) {
        const double share = std::min(fraction, 1.0);
        const std::size_t filled = static_cast<std::size_t>(share * BAR_CELLS);
        const std::string percent = std::to_string(static_cast<int>(share * 100));
        line = "[" + std::string(filled, '#') + std::string(BAR_CELLS - filled, ' ') + "] " +
               std::string(3 - percent.size(), ' ') + percent + "%  ";
    }
    line += text;
    // A line that reaches the last column makes some terminals scroll.
    return line.substr(0, static_cast<std::size_t>(std::max(columns - 1, 0)));
}

Progress::Progress(Messages& messages)
    : messages_(messages), active_(messages.isTerminal() && !messages.quiet()),
      next_(std::chrono::steady_clock::now() + BEFORE_FIRST) {}

bool Progress::due() const {
    return active_ && std::chrono::steady_clock::now() >= next_;
}

void Progress::update(double fraction, const std::string& text) {
    if (!due())
        return;
    messages_.write(CLEAR_LINE + progressLine(fraction, text, messages_.columns()));
    drawn_ = true;
    next_ = std::chrono::steady_clock::now() + BETWEEN_DRAWINGS;
}

void Progress::clear() {
    if (drawn_)
        messages_.write(CLEAR_LINE);
    drawn_ = false;
}

} // namespace ostrel::apps::cli
