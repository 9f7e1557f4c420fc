// How cameras are named: identifiers that stay, and display names for people. Knows nothing of the kernel.
#ifndef OSTREL_PLATFORM_CAMERAS_V4L2_IDENTITY_H
#define OSTREL_PLATFORM_CAMERAS_V4L2_IDENTITY_H

#include "platform/cameras/details.h"
#include "platform/cameras/v4l2/discovery.h"

#include <string>
#include <utility>
#include <vector>

namespace ostrel {
namespace cameras {
namespace v4l2 {

// The first of the texts that is not empty once it is valid.
std::string displayName(const std::string& name, const std::string& card, const std::string& driver);

// What only the node itself could tell; empty when it was not asked.
struct NodeTexts {
    std::string card, driver, busInfo;
};

CameraDetails detailsOf(const NodeFacts& facts, const NodeTexts& texts);

// A function of these facts alone, never of what else is plugged in or was before: an identifier that names a
// camera never names another one later. Printable ASCII, in these forms:
//   usb-VENDOR:PRODUCT[-SERIAL]-at-CONTROLLER-usb-PORTS:INTERFACE[.N]
//   bus-BUS-MODEL[.N]          other hardware, and USB cameras where there is no sysfs
//   bus-BUS[.N]                devices without hardware
//   port-PORT-MODEL[.N], name-NAME[.N]    what is left where a node could not be asked
// A "-at-" within a serial number becomes %2Dat-. N, its order among the nodes of one interface, is left out
// where it is 0.
std::string identifierOf(const NodeFacts& facts, const NodeTexts& texts);

// The identifiers that release 1.0.0 may have given the camera.
std::vector<std::string> formerIdentifiers(const NodeFacts& facts, const NodeTexts& texts);

// How the camera's identifier begins and ends in whatever port it is; both empty where nothing but the port
// tells it from others of its model.
std::pair<std::string, std::string> identifierInAnyPort(const NodeFacts& facts);

} // namespace v4l2
} // namespace cameras
} // namespace ostrel

#endif
