#include "platform/cameras/v4l2/identity.h"

#include <cstdint>
#include <cstdio>
#include <set>

namespace ostrel {
namespace cameras {
namespace v4l2 {

namespace {

// The length of the valid UTF-8 sequence at the start, 0 when there is none.
size_t sequenceLength(const unsigned char* s, size_t left) {
    if (s[0] < 0x80)
        return 1;
    const size_t length = s[0] >= 0xF0 ? 4 : s[0] >= 0xE0 ? 3 : 2;
    if (s[0] < 0xC2 || s[0] > 0xF4 || length > left)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((s[i] & 0xC0) != 0x80)
            return 0;
    const bool tooLong = (s[0] == 0xE0 && s[1] < 0xA0) || (s[0] == 0xF0 && s[1] < 0x90);
    const bool noCharacter = (s[0] == 0xED && s[1] > 0x9F) || (s[0] == 0xF4 && s[1] > 0x8F);
    return tooLong || noCharacter ? 0 : length;
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

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

std::string bySerial(const NodeFacts& facts) {
    if (facts.serial.empty())
        return std::string();
    return "usb-" + asciiSafe(facts.model) + '-' + asciiSafe(facts.serial) + partOf(facts);
}

std::string byPlace(const NamedNode& node) {
    const NodeFacts& facts = node.facts;
    // The model belongs to it: another camera in the same port is another camera.
    if (!facts.port.empty() && facts.isUsb)
        return "usb-" + asciiSafe(facts.model) + "-at-" + asciiSafe(facts.port) + partOf(facts);
    if (!node.busInfo.empty())
        return "bus-" + asciiSafe(node.busInfo) + partOf(facts);
    if (!facts.port.empty())
        return "port-" + asciiSafe(facts.port) + partOf(facts);
    return "name-" + asciiSafe(facts.name.empty() ? facts.driver : facts.name) + partOf(facts);
}

} // namespace

std::string asciiSafe(const std::string& bytes) {
    std::string result;
    for (const char c : bytes) {
        const bool safe = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                          c == '.' || c == '_' || c == ':' || c == '-';
        if (safe) {
            result += c;
        } else {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
            result += hex;
        }
    }
    return result;
}

std::string validUtf8(const std::string& bytes) {
    std::string result;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    for (size_t i = 0; i < bytes.size();) {
        const size_t length = sequenceLength(data + i, bytes.size() - i);
        if (length == 0)
            result += "\xEF\xBF\xBD";
        else if (data[i] < 0x20 || data[i] == 0x7F)
            result += ' ';
        else
            result.append(bytes, i, length);
        i += length ? length : 1;
    }
    return trimmed(result);
}

std::string displayName(const std::string& name, const std::string& card, const std::string& driver) {
    for (const std::string* text : {&name, &card, &driver}) {
        const std::string valid = validUtf8(*text);
        if (!valid.empty())
            return valid;
    }
    return "Camera";
}

std::vector<std::string> Identifiers::assign(const std::vector<NamedNode>& nodes) {
    std::vector<std::string> result(nodes.size());
    std::set<std::string> used;
    std::map<std::string, int> sharing; // how many attached nodes have this serial number
    for (const NamedNode& node : nodes)
        ++sharing[bySerial(node.facts)];
    // Those that were here before come first, lest a newcomer takes their identifiers.
    for (size_t i = 0; i < nodes.size(); ++i) {
        const auto before = given_.find(bySerial(nodes[i].facts) + '\n' + byPlace(nodes[i]));
        if (before != given_.end() && used.insert(before->second).second)
            result[i] = before->second;
    }
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (!result[i].empty())
            continue;
        const std::string serial = bySerial(nodes[i].facts);
        const std::string place = byPlace(nodes[i]);
        std::string identifier = serial.empty() || sharing[serial] > 1 || used.count(serial) ? place : serial;
        const std::string first = identifier;
        for (int n = 2; !used.insert(identifier).second; ++n)
            identifier = first + '-' + std::to_string(n);
        result[i] = identifier;
        given_[serial + '\n' + place] = identifier;
    }
    return result;
}

} // namespace v4l2
} // namespace cameras
} // namespace ostrel
