// Texts that devices say of themselves, which may hold any bytes.
#ifndef OSTREL_PLATFORM_CAMERAS_DEVICE_TEXTS_H
#define OSTREL_PLATFORM_CAMERAS_DEVICE_TEXTS_H

#include <string>

namespace ostrel {
namespace cameras {

// Every byte but letters, digits and . _ : - becomes %XX, two upper-case hexadecimal digits.
std::string asciiSafe(const std::string& bytes);

// Valid UTF-8: bytes that are none become U+FFFD, control characters blanks; blanks at both ends go.
std::string validUtf8(const std::string& bytes);

} // namespace cameras
} // namespace ostrel

#endif
