// Columns of text.
#ifndef OSTREL_APPS_CAMERA_TABLE_H
#define OSTREL_APPS_CAMERA_TABLE_H

#include <string>
#include <vector>

namespace ostrel::apps::cli {

using Row = std::vector<std::string>; // all of a table's have as many cells

// One line for each row, without blanks at its end.
std::string aligned(const std::vector<Row>& rows);

} // namespace ostrel::apps::cli

#endif
