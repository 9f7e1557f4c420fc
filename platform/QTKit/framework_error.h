// Errors of the framework as Foundation has them.
#ifndef OSTREL_PLATFORM_QTKIT_FRAMEWORK_ERROR_H
#define OSTREL_PLATFORM_QTKIT_FRAMEWORK_ERROR_H

#include "platform/cameras/error.h"

#import <Foundation/Foundation.h>

namespace ostrel {

// UTF-8 to an autoreleased string; nil when the bytes are not UTF-8.
inline NSString* toNSString(const std::string& text) {
    return [[[NSString alloc] initWithBytes:text.data() length:text.size()
                                   encoding:NSUTF8StringEncoding] autorelease];
}

// YES when nothing is wrong; otherwise NO, with an autoreleased error stored unless there is no place for it.
inline BOOL report(const cameras::Error& error, NSError** errorPtr) {
    if (!error)
        return YES;
    if (errorPtr) {
        NSString* text = toNSString(error.text);
        NSDictionary* info = [NSDictionary
            dictionaryWithObjectsAndKeys:text ? text : @"unknown error", NSLocalizedDescriptionKey, nil];
        *errorPtr = [NSError errorWithDomain:@"QTKitErrorDomain" code:error.code userInfo:info];
    }
    return NO;
}

} // namespace ostrel

#endif
