#include "platform/cameras/v4l2/identity.h"

#include "platform/cameras/device_texts.h"

#include <charconv>
#include <system_error>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

const char* const AT = "-at-";

// Interfaces and nodes of one device. The number of the interface is always there, not only where there are
// several: at plugging in, the nodes appear one after the other.
std::string partOf(const NodeFacts& facts) {
    std::string part;
    if (!facts.interface.empty())
        part += ':' + asciiSafe(facts.interface);
    if (facts.index > 0)
        part += '.' + std::to_string(facts.index);
    return part;
}

// The port's mark must not be in the serial number, lest one camera's identifier looks like another's in some
// port.
std::string beforePort(const NodeFacts& facts) {
    if (facts.serial.empty())
        return "usb-" + asciiSafe(facts.model) + AT;
    std::string serial = asciiSafe(facts.serial);
    for (size_t at = serial.find(AT); at != std::string::npos; at = serial.find(AT, at))
        serial.replace(at, 1, "%2D");
    return "usb-" + asciiSafe(facts.model) + '-' + serial + AT;
}

std::string orElse(const std::string& first, const std::string& second) {
    return first.empty() ? second : first;
}

// 0 for anything else.
int hexadecimal(const std::string& digits) {
    int value = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result read = std::from_chars(digits.data(), end, value, 16);
    return read.ec == std::errc() && read.ptr == end ? value : 0;
}

// vivid pretends to be a platform device.
bool isWithoutHardware(const NodeFacts& facts, const NodeTexts& texts) {
    return facts.isVirtual || orElse(facts.driver, texts.driver) == "vivid" ||
           texts.driver == "v4l2 loopback";
}

// The model belongs to a place: another camera there is another camera. What sysfs knows comes first, as it
// is known whether the node can be asked or not.
std::string atItsPlace(const NodeFacts& facts, const NodeTexts& texts) {
    const std::string model = orElse(orElse(facts.model, facts.driver), orElse(texts.card, texts.driver));
    const std::string bus = orElse(texts.busInfo, facts.bus);
    if (bus.empty() && facts.port.empty())
        return "name-" + asciiSafe(orElse(facts.name, model));
    return (bus.empty() ? "port-" + asciiSafe(facts.port) : "bus-" + asciiSafe(bus)) + '-' + asciiSafe(model);
}

} // namespace

std::string displayName(const std::string& name, const std::string& card, const std::string& driver) {
    for (const std::string* text : {&name, &card, &driver}) {
        const std::string valid = validUtf8(*text);
        if (!valid.empty())
            return valid;
    }
    return "Camera";
}

CameraDetails detailsOf(const NodeFacts& facts, const NodeTexts& texts) {
    CameraDetails details;
    details.kind = "V4L2";
    details.node = facts.path;
    details.driver = validUtf8(orElse(facts.driver, texts.driver));
    details.bus = validUtf8(orElse(facts.bus, orElse(facts.port, texts.busInfo)));
    const size_t colon = facts.model.find(':');
    if (colon != std::string::npos) {
        details.vendor = hexadecimal(facts.model.substr(0, colon));
        details.product = hexadecimal(facts.model.substr(colon + 1));
    }
    details.serialNumber = validUtf8(facts.serial);
    return details;
}

std::string identifierOf(const NodeFacts& facts, const NodeTexts& texts) {
    if (facts.isUsb && !facts.port.empty())
        return beforePort(facts) + asciiSafe(facts.port) + partOf(facts);
    if (isWithoutHardware(facts, texts) && !texts.busInfo.empty())
        return "bus-" + asciiSafe(texts.busInfo) + partOf(facts);
    return atItsPlace(facts, texts) + partOf(facts);
}

std::vector<std::string> formerIdentifiers(const NodeFacts& facts, const NodeTexts& texts) {
    std::vector<std::string> result;
    if (!facts.serial.empty())
        result.push_back("usb-" + asciiSafe(facts.model) + '-' + asciiSafe(facts.serial) + partOf(facts));
    if (facts.isUsb && !facts.port.empty())
        result.push_back("usb-" + asciiSafe(facts.model) + AT + asciiSafe(facts.port) + partOf(facts));
    if (!texts.busInfo.empty())
        result.push_back("bus-" + asciiSafe(texts.busInfo) + partOf(facts));
    if (!facts.isUsb && !facts.port.empty())
        result.push_back("port-" + asciiSafe(facts.port) + partOf(facts));
    return result;
}

std::pair<std::string, std::string> identifierInAnyPort(const NodeFacts& facts) {
    if (!facts.isUsb || facts.port.empty() || facts.serial.empty() || facts.interface.empty())
        return std::pair<std::string, std::string>();
    return {beforePort(facts), partOf(facts)};
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
