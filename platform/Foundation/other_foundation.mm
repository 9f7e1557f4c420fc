// Two Foundations in one process would each answer for some of the classes that they both have, and their
// objects do not understand each other. So a program that loads a second one, GNUstep's say, is told so and
// ended, before its first object is made.
#import <objc/runtime.h>

#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

namespace {

// Before the classes of this file's library are made known to the runtime, which has the default priority.
__attribute__((constructor(101))) void refuseOtherFoundation() {
    // One that was loaded before has made its classes known; of one that is still to follow, the linker knows
    // a class that there is none of here.
    if (!objc_lookUpClass("NSObject") && !dlsym(RTLD_DEFAULT, "__objc_class_name_NSProxy"))
        return;
    static const char line[] = "libostrelvideounix: another Foundation (GNUstep?) is loaded as well; build "
                               "with -DOSTREL_FOUNDATION=gnustep\n";
    if (write(STDERR_FILENO, line, sizeof line - 1) < 0) {
        // then it ends without a word
    }
    _exit(EXIT_FAILURE);
}

} // namespace
