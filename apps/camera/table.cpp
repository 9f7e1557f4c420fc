#include "apps/camera/table.h"

#include "apps/common/text.h"

#include <algorithm>

namespace ostrel::apps::cli {

namespace {

const std::size_t BETWEEN_COLUMNS = 2;

} // namespace

std::string aligned(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows)
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], displayWidth(row[column]));
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column)
            line +=
                row[column] + std::string(widths[column] - displayWidth(row[column]) + BETWEEN_COLUMNS, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

} // namespace ostrel::apps::cli
