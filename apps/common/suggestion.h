// What somebody meant who wrote a name that does not exist.
#ifndef OSTREL_APPS_COMMON_SUGGESTION_H
#define OSTREL_APPS_COMMON_SUGGESTION_H

#include <string>
#include <vector>

namespace ostrel::apps {

// "snapshot", or nothing when no known name is near: one that begins with the text, that other programs call
// like this, or that differs in two letters at most.
std::string suggestion(const std::string& text, const std::vector<std::string>& known);

} // namespace ostrel::apps

#endif
