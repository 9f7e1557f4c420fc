// What the platform says of its cameras. Plain C++: Qt's object headers and Objective-C do not go together in
// one file with every compiler.
#ifndef OSTREL_DEVICES_PLATFORM_LISTING_H
#define OSTREL_DEVICES_PLATFORM_LISTING_H

#include <string>
#include <utility>
#include <vector>

namespace ostrel {

// Identifier and display name of each attached camera as UTF-8, in the platform's order. Any thread may call.
// Throws std::logic_error when a camera lacks either text.
std::vector<std::pair<std::string, std::string>> platformCameras();

} // namespace ostrel

#endif
