// Lays help texts out for a terminal.
#ifndef OSTREL_APPS_CAMERA_HELP_H
#define OSTREL_APPS_CAMERA_HELP_H

#include <string>
#include <utility>
#include <vector>

namespace ostrel::apps::cli {

// What stands on the left, and what explains it.
using HelpRows = std::vector<std::pair<std::string, std::string>>;

// The title over two columns, the right one wrapped; empty without rows.
std::string helpSection(const std::string& title, const HelpRows& rows);
std::string exitCodesSection();

} // namespace ostrel::apps::cli

#endif
