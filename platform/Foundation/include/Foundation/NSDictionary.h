// Objects by keys: the keys are copied, the objects retained. Any thread may use it.
#ifndef OSTREL_FOUNDATION_NSDICTIONARY_H
#define OSTREL_FOUNDATION_NSDICTIONARY_H

#import <Foundation/NSEnumerator.h>

@class NSArray;
struct NSDictionaryState;

@interface NSDictionary : NSObject <NSCopying, NSFastEnumeration> { // enumerates the keys
@private
    struct NSDictionaryState* state;
}
+ (id)dictionary;
+ (id)dictionaryWithObject:(id)object forKey:(id)key;
+ (id)dictionaryWithObjectsAndKeys:(id)first, ... __attribute__((sentinel));
+ (id)dictionaryWithObjects:(const id*)objects forKeys:(const id*)keys count:(NSUInteger)count;
- (id)initWithObjects:(const id*)objects forKeys:(const id*)keys count:(NSUInteger)count;

- (NSUInteger)count;
- (id)objectForKey:(id)key; // nil when there is none
- (NSArray*)allKeys;
- (BOOL)isEqualToDictionary:(NSDictionary*)dictionary;
@end

#endif
