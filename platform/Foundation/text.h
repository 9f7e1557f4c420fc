// Texts: from formats, and what is UTF-8.
#ifndef OSTREL_PLATFORM_FOUNDATION_TEXT_H
#define OSTREL_PLATFORM_FOUNDATION_TEXT_H

#import <Foundation/NSString.h>

#include <string>
#include <string_view>

namespace ostrel::foundation {

// Bytes of the UTF-8 character that the text, which is not empty, begins with; 0 when that is none.
std::size_t bytesOfCharacter(std::string_view text);

// %@ and the conversions of C. UTF-8: bytes of %s and %c that are not become U+FFFD.
std::string formatted(NSString* format, va_list arguments);

} // namespace ostrel::foundation

#endif
