// The part of Foundation that the library needs and its Objective-C++ clients meet: names, signatures and
// behaviour as published. What is misuse (an index beyond the end, nil into an array) ends the process with a
// line that says so.
#ifndef OSTREL_FOUNDATION_H
#define OSTREL_FOUNDATION_H

#import <Foundation/NSArray.h>
#import <Foundation/NSAutoreleasePool.h>
#import <Foundation/NSDictionary.h>
#import <Foundation/NSEnumerator.h>
#import <Foundation/NSError.h>
#import <Foundation/NSObjCRuntime.h>
#import <Foundation/NSObject.h>
#import <Foundation/NSString.h>
#import <Foundation/NSValue.h>

#endif
