// Foundation as the macOS headers declare it, cut down to what capture/, devices/ and platform/ use. Only for checking
// that a Mac compiler would take those sources: what is missing here is no part of what they may use without
// thought.
#ifndef OSTREL_TESTS_SYNTAX_FOUNDATION_H
#define OSTREL_TESTS_SYNTAX_FOUNDATION_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__arm64__)
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif
#define YES ((BOOL)1)
#define NO ((BOOL)0)
#define nil ((id)0)

typedef unsigned long NSUInteger;
typedef long NSInteger;
typedef double NSTimeInterval;

@class NSString, NSDictionary, NSError;

typedef NSUInteger NSStringEncoding;
enum { NSUTF8StringEncoding = 4 };

@protocol NSObject
- (NSString*)description;
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
+ (Class)class;
- (id)init;
- (id)copy;
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
- (id)initWithBytes:(const void*)bytes length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
- (const char*)UTF8String;
- (BOOL)isEqualToString:(NSString*)string;
@end

@interface NSArray : NSObject <NSFastEnumeration>
+ (id)array;
- (NSUInteger)count;
@end

@interface NSMutableArray : NSArray
- (void)addObject:(id)object;
@end

@interface NSDictionary : NSObject
- (id)objectForKey:(id)key;
+ (id)dictionaryWithObjectsAndKeys:(id)firstObject, ... __attribute__((sentinel(0, 1)));
@end

@interface NSNumber : NSObject
+ (NSNumber*)numberWithUnsignedInt:(unsigned int)value;
- (unsigned int)unsignedIntValue;
@end

@interface NSError : NSObject
+ (id)errorWithDomain:(NSString*)domain code:(NSInteger)code userInfo:(NSDictionary*)info;
- (NSInteger)code;
- (NSString*)localizedDescription;
@end

#ifdef __cplusplus
extern "C"
#else
extern
#endif
    NSString* const NSLocalizedDescriptionKey;

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
