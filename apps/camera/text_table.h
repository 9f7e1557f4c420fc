// Aligned columns of text.
#ifndef OSTREL_APPS_CAMERA_TEXT_TABLE_H
#define OSTREL_APPS_CAMERA_TEXT_TABLE_H

#include <string>
#include <vector>

namespace ostrel::apps::cli {

using Row = std::vector<std::string>;

// One line a row, all of as many cells as the first; without blanks at their ends.
std::string aligned(const std::vector<Row>& rows);

} // namespace ostrel::apps::cli

#endif
