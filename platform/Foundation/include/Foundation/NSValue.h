// Numbers. They never change, and any thread may use them.
#ifndef OSTREL_FOUNDATION_NSVALUE_H
#define OSTREL_FOUNDATION_NSVALUE_H

#import <Foundation/NSObject.h>

// KIND(part of the names of the methods that create, type, method that answers the value)
#define OSTREL_EACH_KIND_OF_NUMBER(KIND)                                                                     \
    KIND(Char, char, charValue)                                                                              \
    KIND(UnsignedChar, unsigned char, unsignedCharValue)                                                     \
    KIND(Short, short, shortValue)                                                                           \
    KIND(UnsignedShort, unsigned short, unsignedShortValue)                                                  \
    KIND(Int, int, intValue)                                                                                 \
    KIND(UnsignedInt, unsigned int, unsignedIntValue)                                                        \
    KIND(Long, long, longValue)                                                                              \
    KIND(UnsignedLong, unsigned long, unsignedLongValue)                                                     \
    KIND(LongLong, long long, longLongValue)                                                                 \
    KIND(UnsignedLongLong, unsigned long long, unsignedLongLongValue)                                        \
    KIND(Float, float, floatValue)                                                                           \
    KIND(Double, double, doubleValue)                                                                        \
    KIND(Integer, NSInteger, integerValue)                                                                   \
    KIND(UnsignedInteger, NSUInteger, unsignedIntegerValue)

@interface NSNumber : NSObject <NSCopying> {
@private
    char kind; // of number, as @encode writes it: q, Q, f or d
    union NSNumberValue {
        long long q;
        unsigned long long Q;
        double d; // of kind f as well
    } number;
}
#define OSTREL_DECLARE_NUMBER(Name, type, method)                                                            \
    +(NSNumber*)numberWith##Name : (type)value;                                                              \
    -(id)initWith##Name : (type)value;                                                                       \
    -(type)method;
OSTREL_EACH_KIND_OF_NUMBER(OSTREL_DECLARE_NUMBER)
#undef OSTREL_DECLARE_NUMBER
+ (NSNumber*)numberWithBool:(BOOL)value;
- (id)initWithBool:(BOOL)value;
- (BOOL)boolValue; // whether it is not 0

- (NSString*)stringValue;
- (BOOL)isEqualToNumber:(NSNumber*)other; // by value, whatever the kinds
@end

#endif
