#import <Foundation/Foundation.h>

#include "platform/Foundation/collection.h"
#include "platform/Foundation/failure.h"

#include <unordered_map>

namespace {

struct Hash {
    std::size_t operator()(id key) const { return [key hash]; }
};

struct Equal {
    bool operator()(id one, id other) const { return [one isEqual:other]; }
};

} // namespace

struct NSDictionaryState {
    std::unordered_map<id, id, Hash, Equal> objects;
    std::vector<id> keys; // the same, for those who walk over them
    unsigned long mutations = 0;

    // There is room for one more. A key that is there already gets the object.
    void set(id key, id object) {
        const auto found = objects.find(key);
        if (found != objects.end()) {
            [found->second release];
            found->second = [object retain];
            return;
        }
        const ostrel::foundation::ReleasedOnException copy{[key copy]};
        objects.emplace(copy.object, object);
        keys.push_back(copy.object);
        [object retain];
    }
};

@implementation NSDictionary

+ (id)dictionary {
    return [self dictionaryWithObjects:NULL forKeys:NULL count:0];
}

+ (id)dictionaryWithObject:(id)object forKey:(id)key {
    return [self dictionaryWithObjects:&object forKeys:&key count:1];
}

+ (id)dictionaryWithObjectsAndKeys:(id)first, ... {
    va_list rest;
    va_start(rest, first);
    std::vector<id> all = ostrel::foundation::argumentsUpToNil(first, rest);
    va_end(rest);
    all.resize((all.size() + 1) / 2 * 2); // nil for a key that is missing
    std::vector<id> objects, keys;
    for (std::size_t i = 0; i < all.size(); ++i)
        (i % 2 == 0 ? objects : keys).push_back(all[i]);
    return [self dictionaryWithObjects:objects.data() forKeys:keys.data() count:keys.size()];
}

+ (id)dictionaryWithObjects:(const id*)objects forKeys:(const id*)keys count:(NSUInteger)count {
    return [[[self alloc] initWithObjects:objects forKeys:keys count:count] autorelease];
}

- (id)init {
    return [self initWithObjects:NULL forKeys:NULL count:0];
}

- (id)initWithObjects:(const id*)objects forKeys:(const id*)keys count:(NSUInteger)count {
    const ostrel::foundation::ReleasedOnException guard{self};
    state = new NSDictionaryState;
    state->objects.reserve(count);
    state->keys.reserve(count);
    for (NSUInteger i = 0; i < count; ++i) {
        ostrel::foundation::refuseNil(keys[i], self, _cmd);
        ostrel::foundation::refuseNil(objects[i], self, _cmd);
        state->set(keys[i], objects[i]);
    }
    return self;
}

- (void)dealloc {
    if (state)
        for (const auto& each : state->objects) {
            [each.first release];
            [each.second release];
        }
    delete state;
    [super dealloc];
}

- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

- (NSUInteger)count {
    return state->keys.size();
}

- (id)objectForKey:(id)key {
    const auto found = key ? state->objects.find(key) : state->objects.end();
    return found == state->objects.end() ? nil : found->second;
}

- (NSArray*)allKeys {
    return [NSArray arrayWithObjects:state->keys.data() count:[self count]];
}

- (BOOL)isEqualToDictionary:(NSDictionary*)dictionary {
    if ([self count] != [dictionary count])
        return NO;
    for (const auto& each : state->objects)
        if (![each.second isEqual:[dictionary objectForKey:each.first]])
            return NO;
    return YES;
}

- (BOOL)isEqual:(id)object {
    return [object isKindOfClass:[NSDictionary class]] && [self isEqualToDictionary:object];
}

- (NSUInteger)hash {
    return [self count];
}

- (NSString*)description {
    std::string text;
    for (id key : state->keys)
        text += ostrel::foundation::descriptionWithin(key) + " = " +
                ostrel::foundation::descriptionWithin([self objectForKey:key]) + "; ";
    return [NSString stringWithFormat:@"{%s}", text.c_str()];
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)enumeration
                                  objects:(id*)buffer
                                    count:(NSUInteger)length {
    (void)buffer;
    (void)length;
    return ostrel::foundation::enumerateAll(enumeration, state->keys, state->mutations);
}

@end
