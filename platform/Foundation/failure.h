// What goes wrong: misuse, and exceptions of C++ on an object's way to its owner.
#ifndef OSTREL_PLATFORM_FOUNDATION_FAILURE_H
#define OSTREL_PLATFORM_FOUNDATION_FAILURE_H

#import <Foundation/NSObject.h>

#include <exception>

namespace ostrel::foundation {

// Logs what was wrong and ends the process.
[[noreturn]] void misuse(NSString* what, ...);

// Releases the object when the scope ends by an exception.
struct ReleasedOnException {
    ~ReleasedOnException() {
        if (std::uncaught_exceptions() > before)
            [object release];
    }
    const id object;
    const int before = std::uncaught_exceptions();
};

} // namespace ostrel::foundation

#endif
