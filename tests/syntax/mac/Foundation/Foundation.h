// Foundation as the macOS headers declare it, cut down to what capture/ and devices/ use. Only for checking
// that a Mac compiler would take those sources: what is missing here is no part of what they may use without
// thought.
#ifndef OSTREL_TESTS_SYNTAX_FOUNDATION_H
#define OSTREL_TESTS_SYNTAX_FOUNDATION_H

#include <stddef.h>
#include <stdint.h>

typedef signed char BOOL;
#define YES ((BOOL)1)
#define NO ((BOOL)0)
#define nil ((id)0)

typedef unsigned long NSUInteger;
typedef long NSInteger;
typedef double NSTimeInterval;

@class NSString, NSDictionary, NSError;

@protocol NSObject
- (id)retain;
- (oneway void)release;
- (id)autorelease;
- (BOOL)isKindOfClass:(Class)aClass;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (id)alloc;
- (id)init;
- (void)dealloc;
@end

typedef struct {
    unsigned long state;
    id* itemsPtr;
    unsigned long* mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id[])buffer
                                    count:(NSUInteger)length;
@end

@interface NSString : NSObject
- (const char*)UTF8String;
@end

@interface NSArray : NSObject <NSFastEnumeration>
+ (id)array;
- (NSUInteger)count;
@end

@interface NSMutableArray : NSArray
@end

@interface NSDictionary : NSObject
+ (id)dictionaryWithObjectsAndKeys:(id)firstObject, ... __attribute__((sentinel(0, 1)));
@end

@interface NSNumber : NSObject
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
@end

@interface NSError : NSObject
@end

@interface NSAutoreleasePool : NSObject
- (void)drain;
@end

#ifdef __cplusplus
extern "C"
#else
extern
#endif
    void
    NSLog(NSString* format, ...) __attribute__((format(__NSString__, 1, 2)));

#endif
