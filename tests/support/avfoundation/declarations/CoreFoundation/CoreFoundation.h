// The run loop by its published names: what the library uses of it.
#ifndef OSTREL_TESTS_AVFOUNDATION_COREFOUNDATION_H
#define OSTREL_TESTS_AVFOUNDATION_COREFOUNDATION_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char Boolean;
typedef double CFTimeInterval;
typedef const void* CFTypeRef;
typedef const struct __CFString* CFStringRef;
typedef struct __CFRunLoop* CFRunLoopRef;
typedef int32_t CFRunLoopRunResult;

extern const CFStringRef kCFRunLoopDefaultMode;

CFRunLoopRef CFRunLoopGetCurrent(void);
CFRunLoopRef CFRunLoopGetMain(void);
CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef loop);
CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef mode, CFTimeInterval seconds,
                                      Boolean returnAfterSourceHandled);
void CFRelease(CFTypeRef object);

#ifdef __cplusplus
}
#endif

#endif
