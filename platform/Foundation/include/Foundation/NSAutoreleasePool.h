// Releases later what was autoreleased. Pools belong to the thread that made them and nest there.
#ifndef OSTREL_FOUNDATION_NSAUTORELEASEPOOL_H
#define OSTREL_FOUNDATION_NSAUTORELEASEPOOL_H

#import <Foundation/NSObject.h>

@interface NSAutoreleasePool : NSObject {
@private
    NSAutoreleasePool* outer;
    NSUInteger first; // of its objects among those of the thread
}
+ (void)addObject:(id)object;
// As release: takes the pools within it along. A pool that nobody drains goes when its thread ends.
- (void)drain;
@end

#endif
