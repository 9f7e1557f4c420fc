#import <Foundation/Foundation.h>

#include "platform/Foundation/collection.h"
#include "platform/Foundation/failure.h"

#import <objc/runtime.h>

using ostrel::foundation::refuseNil;

struct NSArrayState {
    std::vector<id> objects;
    unsigned long mutations = 0;
};

namespace {

void refuseBeyond(NSUInteger limit, NSUInteger index, NSArray* array, SEL method) {
    if (index >= limit)
        ostrel::foundation::misuse(@"-[%s %s]: index %lu is out of range: there are %lu objects",
                                   object_getClassName(array), sel_getName(method), index, [array count]);
}

} // namespace

@implementation NSArray

+ (id)array {
    return [self arrayWithObjects:NULL count:0];
}

+ (id)arrayWithObject:(id)object {
    return [self arrayWithObjects:&object count:1];
}

+ (id)arrayWithObjects:(id)first, ... {
    va_list rest;
    va_start(rest, first);
    const std::vector<id> objects = ostrel::foundation::argumentsUpToNil(first, rest);
    va_end(rest);
    return [self arrayWithObjects:objects.data() count:objects.size()];
}

+ (id)arrayWithObjects:(const id*)objects count:(NSUInteger)count {
    return [[[self alloc] initWithObjects:objects count:count] autorelease];
}

+ (id)arrayWithArray:(NSArray*)array {
    return [self arrayWithObjects:array->state->objects.data() count:[array count]];
}

- (id)init {
    return [self initWithObjects:NULL count:0];
}

- (id)initWithObjects:(const id*)objects count:(NSUInteger)count {
    const ostrel::foundation::ReleasedOnException guard{self};
    state = new NSArrayState;
    state->objects.reserve(count);
    for (NSUInteger i = 0; i < count; ++i) {
        refuseNil(objects[i], self, _cmd);
        state->objects.push_back([objects[i] retain]);
    }
    return self;
}

- (void)dealloc {
    if (state)
        for (id object : state->objects)
            [object release];
    delete state;
    [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    if (object_getClass(self) == [NSArray class])
        return [self retain];
    return [[NSArray alloc] initWithObjects:state->objects.data() count:[self count]];
}

- (NSUInteger)count {
    return state->objects.size();
}

- (id)objectAtIndex:(NSUInteger)index {
    refuseBeyond([self count], index, self, _cmd);
    return state->objects[index];
}

- (id)lastObject {
    return state->objects.empty() ? nil : state->objects.back();
}

- (NSUInteger)indexOfObject:(id)object {
    for (NSUInteger i = 0; i < [self count]; ++i)
        if ([state->objects[i] isEqual:object])
            return i;
    return NSNotFound;
}

- (BOOL)containsObject:(id)object {
    return [self indexOfObject:object] != NSNotFound;
}

- (BOOL)isEqualToArray:(NSArray*)array {
    if ([self count] != [array count])
        return NO;
    for (NSUInteger i = 0; i < [self count]; ++i)
        if (![state->objects[i] isEqual:array->state->objects[i]])
            return NO;
    return YES;
}

- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[NSArray class]] && [self isEqualToArray:object];
}

- (NSUInteger)hash {
    return [self count];
}

- (NSString*)description {
    std::string text;
    for (id object : state->objects)
        text += (text.empty() ? "" : ", ") + ostrel::foundation::descriptionWithin(object);
    return [NSString stringWithFormat:@"(%s)", text.c_str()];
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)enumeration
                                  objects:(id*)buffer
                                    count:(NSUInteger)length {
    (void)buffer;
    (void)length;
    return ostrel::foundation::enumerateAll(enumeration, state->objects, state->mutations);
}

@end

// A removed object is released last, as it may be the one that removed itself.
@implementation NSMutableArray

+ (id)arrayWithCapacity:(NSUInteger)count {
    NSMutableArray* const array = [self array];
    array->state->objects.reserve(count);
    return array;
}

- (void)addObject:(id)object {
    [self insertObject:object atIndex:[self count]];
}

- (void)insertObject:(id)object atIndex:(NSUInteger)index {
    refuseNil(object, self, _cmd);
    refuseBeyond([self count] + 1, index, self, _cmd);
    state->objects.insert(state->objects.begin() + static_cast<NSInteger>(index), object);
    [object retain];
    ++state->mutations;
}

- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)object {
    refuseNil(object, self, _cmd);
    id before = [self objectAtIndex:index];
    state->objects[index] = [object retain];
    ++state->mutations;
    [before release];
}

- (void)removeObjectAtIndex:(NSUInteger)index {
    id before = [self objectAtIndex:index];
    state->objects.erase(state->objects.begin() + static_cast<NSInteger>(index));
    ++state->mutations;
    [before release];
}

- (void)removeLastObject {
    [self removeObjectAtIndex:[self count] - 1];
}

- (void)removeAllObjects {
    while ([self count] > 0)
        [self removeLastObject];
}

@end
