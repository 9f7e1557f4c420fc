// Texts that the platform or a client hands over as C strings.
#ifndef OSTREL_BASE_TEXT_H
#define OSTREL_BASE_TEXT_H

#include <stdexcept>
#include <string>

namespace ostrel {

// A copy of a text that must be there. Throws std::logic_error for null, as std::string's own constructor
// does in some standard libraries; others read through the null pointer.
inline std::string requiredText(const char* text) {
    if (!text)
        throw std::logic_error("no text");
    return text;
}

} // namespace ostrel

#endif
