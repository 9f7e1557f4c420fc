#include "platform/cameras/device_texts.h"

#include <cstdint>
#include <cstdio>

namespace ostrel {
namespace cameras {

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

// Of a valid sequence. U+0080 to U+009F drive terminals as well.
bool isControl(const unsigned char* s) {
    return s[0] < 0x20 || s[0] == 0x7F || (s[0] == 0xC2 && s[1] < 0xA0);
}

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
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
        else if (isControl(data + i))
            result += ' ';
        else
            result.append(bytes, i, length);
        i += length ? length : 1;
    }
    return trimmed(result);
}

} // namespace cameras
} // namespace ostrel
