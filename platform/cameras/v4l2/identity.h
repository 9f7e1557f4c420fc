// How cameras are named: identifiers that stay, and display names for people. Knows nothing of the kernel.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_IDENTITY_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_IDENTITY_H

#include "platform/cameras/v4l2/discovery.h"

#include <map>
#include <string>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// Every byte but letters, digits and . _ : - becomes %XX.
std::string asciiSafe(const std::string& bytes);

// Valid UTF-8: bytes that are none become U+FFFD, control characters blanks; blanks at both ends go.
std::string validUtf8(const std::string& bytes);

// The first of the texts that is not empty once it is valid.
std::string displayName(const std::string& name, const std::string& card, const std::string& driver);

// A node with what only the node itself could tell.
struct NamedNode {
    NodeFacts facts;
    std::string busInfo; // empty when it was not asked
};

// Gives each node its identifier. Bound to one thread.
class Identifiers {
public:
    // In the order of the nodes, no two alike. Nodes that are attached at the same time are assigned
    // together.
    std::vector<std::string> assign(const std::vector<NamedNode>& nodes);

private:
    // By the camera and its port: who was plugged into a port before gets the identifier it had there, even
    // when another camera with the same serial number has come or gone meanwhile.
    std::map<std::string, std::string> given_;
};

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
