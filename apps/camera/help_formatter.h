// The help of the command line, made of what the parser knows of its options.
#ifndef OSTREL_APPS_CAMERA_HELP_FORMATTER_H
#define OSTREL_APPS_CAMERA_HELP_FORMATTER_H

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class FormatterBase;
class Option;
} // namespace CLI

namespace ostrel::apps::cli {

// Of options that every command takes.
const char CAMERA_GROUP[] = "Camera options";
const char GENERAL_GROUP[] = "General options";

std::shared_ptr<CLI::FormatterBase> makeHelpFormatter();

// "-s", "--size"
std::vector<std::string> namesOf(const CLI::Option& option);

} // namespace ostrel::apps::cli

#endif
