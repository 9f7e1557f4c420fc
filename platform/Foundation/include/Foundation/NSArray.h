// Objects in order, each retained. Threads that share a mutable array need a lock of their own.
#ifndef OSTREL_FOUNDATION_NSARRAY_H
#define OSTREL_FOUNDATION_NSARRAY_H

#import <Foundation/NSEnumerator.h>

struct NSArrayState;

@interface NSArray : NSObject <NSCopying, NSFastEnumeration> {
@protected
    struct NSArrayState* state;
}
+ (id)array;
+ (id)arrayWithObject:(id)object;
+ (id)arrayWithObjects:(id)first, ... __attribute__((sentinel));
+ (id)arrayWithObjects:(const id*)objects count:(NSUInteger)count;
+ (id)arrayWithArray:(NSArray*)array;
- (id)initWithObjects:(const id*)objects count:(NSUInteger)count;

- (NSUInteger)count;
- (id)objectAtIndex:(NSUInteger)index;
- (id)lastObject;                       // nil when there is none
- (NSUInteger)indexOfObject:(id)object; // of the first equal one, or NSNotFound
- (BOOL)containsObject:(id)object;
- (BOOL)isEqualToArray:(NSArray*)array;
@end

@interface NSMutableArray : NSArray
+ (id)arrayWithCapacity:(NSUInteger)count;
- (void)addObject:(id)object;
- (void)insertObject:(id)object atIndex:(NSUInteger)index;
- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)object;
- (void)removeObjectAtIndex:(NSUInteger)index;
- (void)removeLastObject;
- (void)removeAllObjects;
@end

#endif
