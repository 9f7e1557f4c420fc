#import <Foundation/Foundation.h>

#include <cmath>
#include <functional>
#include <limits>
#include <type_traits>

namespace {

// A whole number as sign and magnitude, whatever kind it came as; any other as it is.
struct Exact {
    bool isNegative = false;
    unsigned long long magnitude = 0;
    double rest = 0; // 0 where the number is whole
};

bool operator==(const Exact& one, const Exact& other) {
    return one.isNegative == other.isNegative && one.magnitude == other.magnitude && one.rest == other.rest;
}

Exact exactly(long long value) {
    const auto bits = static_cast<unsigned long long>(value);
    return {value < 0, value < 0 ? 0 - bits : bits, 0};
}

Exact exactly(double value) {
    if (std::trunc(value) != value || std::fabs(value) >= 0x1p64)
        return {false, 0, value};
    return {value < 0, static_cast<unsigned long long>(std::fabs(value)), 0};
}

template <typename Type>
char kindOf() {
    if (std::is_floating_point<Type>())
        return std::is_same<Type, float>() ? 'f' : 'd';
    return std::is_signed<Type>() ? 'q' : 'Q';
}

// As C does it, but for numbers that the type does not have: the nearest one, and 0 for what is none.
template <typename Type>
Type converted(double value) {
    using Limits = std::numeric_limits<Type>;
    if (std::is_floating_point<Type>())
        return static_cast<Type>(value);
    if (std::isnan(value))
        return 0;
    if (value <= static_cast<double>(Limits::lowest()))
        return Limits::lowest();
    return value >= static_cast<double>(Limits::max()) ? Limits::max() : static_cast<Type>(value);
}

} // namespace

@implementation NSNumber

#define OSTREL_DEFINE_NUMBER(Name, type, method)                                                             \
    +(NSNumber*)numberWith##Name : (type)value {                                                             \
        return [[[self alloc] initWith##Name:value] autorelease];                                            \
    }                                                                                                        \
    -(id)initWith##Name : (type)value {                                                                      \
        kind = kindOf<type>();                                                                               \
        if (std::is_floating_point<type>())                                                                  \
            number.d = static_cast<double>(value);                                                           \
        else                                                                                                 \
            number.q = static_cast<long long>(value);                                                        \
        return self;                                                                                         \
    }                                                                                                        \
    -(type)method {                                                                                          \
        return kind == 'q'   ? static_cast<type>(number.q)                                                   \
               : kind == 'Q' ? static_cast<type>(number.Q)                                                   \
                             : converted<type>(number.d);                                                    \
    }
OSTREL_EACH_KIND_OF_NUMBER(OSTREL_DEFINE_NUMBER)
#undef OSTREL_DEFINE_NUMBER

+ (NSNumber*)numberWithBool:(BOOL)value {
    return [[[self alloc] initWithBool:value] autorelease];
}

- (id)initWithBool:(BOOL)value {
    return [self initWithChar:value ? 1 : 0];
}

- (BOOL)boolValue {
    return kind == 'q' || kind == 'Q' ? number.Q != 0 : number.d != 0;
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

- (Exact)exactly {
    if (kind == 'q')
        return exactly(number.q);
    return kind == 'Q' ? Exact{false, number.Q, 0} : exactly(number.d);
}

- (BOOL)isEqualToNumber:(NSNumber*)other {
    return self == other || (other && [self exactly] == [other exactly]);
}

- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[NSNumber class]] && [self isEqualToNumber:object];
}

- (NSUInteger)hash {
    const Exact exact = [self exactly];
    return exact.rest == 0 ? exact.magnitude : std::hash<double>()(exact.rest);
}

- (NSString*)stringValue {
    if (kind == 'q')
        return [NSString stringWithFormat:@"%lld", number.q];
    if (kind == 'Q')
        return [NSString stringWithFormat:@"%llu", number.Q];
    return [NSString stringWithFormat:kind == 'f' ? @"%0.7g" : @"%0.16g", number.d];
}

- (NSString*)description {
    return [self stringValue];
}

@end
