// Objective-C exceptions as texts. The framework raises them where others return errors, and C++ cannot catch
// them everywhere.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_GUARD_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_GUARD_H

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// Calls work(context). Nil when it returned, else what the exception says of itself (autoreleased). The work
// must not throw exceptions of C++.
NSString* ostrelGuarded(void (*work)(void* context), void* context);

#ifdef __cplusplus
}

#include <string>

namespace ostrel {
namespace cameras {
namespace avfoundation {

inline std::string textOf(NSString* text) {
    const char* const utf8 = [text UTF8String];
    return utf8 ? utf8 : "";
}

// Empty when the work was done without an exception.
template <typename Work>
std::string guarded(Work work) {
    NSString* const raised = ostrelGuarded([](void* context) { (*static_cast<Work*>(context))(); }, &work);
    if (!raised)
        return std::string();
    const std::string what = textOf(raised);
    return what.empty() ? "an exception without words" : what;
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
#endif

#endif
