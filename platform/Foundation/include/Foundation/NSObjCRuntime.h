// Plain types, and the log.
#ifndef OSTREL_FOUNDATION_NSOBJCRUNTIME_H
#define OSTREL_FOUNDATION_NSOBJCRUNTIME_H

#include <ostrel/export.h>

#import <objc/objc.h>
#include <stdarg.h>
#include <stdint.h>

typedef intptr_t NSInteger;
typedef uintptr_t NSUInteger;
typedef double NSTimeInterval; // seconds

#define NSIntegerMax INTPTR_MAX
#define NSIntegerMin INTPTR_MIN
#define NSUIntegerMax UINTPTR_MAX
#define NSNotFound NSIntegerMax

@class NSString;

#ifdef __cplusplus
extern "C" {
#endif

// "2026-01-02 03:04:05.678 program[process:thread] text" to standard error, each line in one piece.
// Thread-safe.
OSTREL_EXPORT void NSLog(NSString* format, ...);
OSTREL_EXPORT void NSLogv(NSString* format, va_list arguments);

#ifdef __cplusplus
}
#endif

#endif
