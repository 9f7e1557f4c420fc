// Text. Strings never change, and any thread may use them.
#ifndef OSTREL_FOUNDATION_NSSTRING_H
#define OSTREL_FOUNDATION_NSSTRING_H

#import <Foundation/NSObject.h>

typedef NSUInteger NSStringEncoding;
enum { NSASCIIStringEncoding = 1, NSUTF8StringEncoding = 4 };

@interface NSString : NSObject <NSCopying> {
@private
    const char* bytes; // UTF-8, ends with a zero
    unsigned int size; // bytes before it
}
+ (id)string;
+ (id)stringWithString:(NSString*)string;
+ (id)stringWithUTF8String:(const char*)text;
+ (id)stringWithFormat:(NSString*)format, ...;

// Nil when the text is not valid in its encoding.
- (id)initWithUTF8String:(const char*)text;
- (id)initWithBytes:(const void*)text length:(NSUInteger)length encoding:(NSStringEncoding)encoding;
// %@ for objects, and the conversions of C; numbers are written as in C's own locale.
- (id)initWithFormat:(NSString*)format, ...;
- (id)initWithFormat:(NSString*)format arguments:(va_list)arguments;

- (NSUInteger)length;      // UTF-16 units
- (const char*)UTF8String; // valid as long as the string
- (BOOL)isEqualToString:(NSString*)string;
@end

// What the compiler makes of @"text": no variables of its own, as the compiler lays them out.
@interface NSConstantString : NSString
@end

#endif
