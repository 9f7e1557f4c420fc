#include "platform/cameras/avfoundation/main_loop.h"

#include <CoreFoundation/CoreFoundation.h>

namespace ostrel {
namespace cameras {
namespace avfoundation {

bool isIdleMainThread() {
    if (CFRunLoopGetCurrent() != CFRunLoopGetMain())
        return false;
    const CFStringRef mode = CFRunLoopCopyCurrentMode(CFRunLoopGetMain());
    if (mode)
        CFRelease(mode);
    return !mode;
}

void turnIdleMainLoop() {
    if (isIdleMainThread())
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true);
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
