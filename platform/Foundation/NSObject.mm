#import <Foundation/Foundation.h>

#include "platform/Foundation/failure.h"

#import <objc/message.h>
#import <objc/runtime.h>

#include <atomic>
#include <cstring>
#include <new>

namespace {

// How many own an object stands behind its variables, so that a pointer to an object is one to its block of
// memory, as what looks for leaks expects.
using Owners = std::atomic<NSUInteger>;

std::size_t placeOfOwners(Class cls) {
    return (class_getInstanceSize(cls) + sizeof(Owners) - 1) / sizeof(Owners) * sizeof(Owners);
}

Owners& ownersOf(id object) {
    return *reinterpret_cast<Owners*>(reinterpret_cast<char*>(object) +
                                      placeOfOwners(object_getClass(object)));
}

// The compiler's method of this very class that makes or ends its variables of C++; null when it has none.
IMP methodOfItsOwn(Class cls, SEL selector) {
    Class above = class_getSuperclass(cls);
    const IMP method = class_getMethodImplementation(cls, selector);
    const bool inherited =
        class_respondsToSelector(above, selector) && method == class_getMethodImplementation(above, selector);
    return inherited ? nullptr : method;
}

void destruct(id object, Class cls) {
    static const SEL selector = sel_registerName(".cxx_destruct");
    for (; class_respondsToSelector(cls, selector); cls = class_getSuperclass(cls))
        if (const IMP method = methodOfItsOwn(cls, selector))
            method(object, selector);
}

// From the root down. What a constructor throws is passed on, with nothing left constructed.
void construct(id object, Class cls) {
    static const SEL selector = sel_registerName(".cxx_construct");
    if (!class_respondsToSelector(cls, selector))
        return;
    construct(object, class_getSuperclass(cls));
    try {
        if (const IMP method = methodOfItsOwn(cls, selector))
            method(object, selector);
    } catch (...) {
        destruct(object, class_getSuperclass(cls));
        throw;
    }
}

template <typename... Object>
id perform(id receiver, SEL selector, Object... objects) {
    using Method = id (*)(id, SEL, Object...);
    return reinterpret_cast<Method>(objc_msg_lookup(receiver, selector))(receiver, selector, objects...);
}

} // namespace

@implementation NSObject

+ (void)initialize {
}

+ (id)alloc {
    const std::size_t size = placeOfOwners(self) + sizeof(Owners);
    void* const memory = std::memset(::operator new(size), 0, size);
    id object = static_cast<id>(memory);
    object_setClass(object, self);
    new (&ownersOf(object)) Owners(1);
    try {
        construct(object, self);
    } catch (...) {
        ::operator delete(memory);
        throw;
    }
    return object;
}

- (void)dealloc {
    destruct(self, object_getClass(self));
    ::operator delete(static_cast<void*>(self));
}

+ (id)new {
    return [[self alloc] init];
}

- (id)init {
    return self;
}

- (id)copy {
    return [(id<NSCopying>)self copyWithZone:NULL];
}

- (id)retain {
    ownersOf(self).fetch_add(1, std::memory_order_relaxed);
    return self;
}

- (oneway void)release {
    if (ownersOf(self).fetch_sub(1, std::memory_order_acq_rel) == 1)
        [self dealloc];
}

- (id)autorelease {
    [NSAutoreleasePool addObject:self];
    return self;
}

- (NSUInteger)retainCount {
    return ownersOf(self).load(std::memory_order_relaxed);
}

// Classes are objects as well, which nobody owns.
+ (id)retain {
    return self;
}

+ (oneway void)release {
}

+ (id)autorelease {
    return self;
}

+ (NSUInteger)retainCount {
    return NSUIntegerMax;
}

+ (Class)class {
    return self;
}

+ (Class)superclass {
    return class_getSuperclass(self);
}

+ (NSString*)description {
    return [NSString stringWithUTF8String:class_getName(self)];
}

- (NSString*)description {
    return [NSString stringWithFormat:@"<%s: %p>", object_getClassName(self), self];
}

- (BOOL)isEqual:(id)object {
    return self == object;
}

- (NSUInteger)hash {
    return reinterpret_cast<NSUInteger>(self);
}

- (id)self {
    return self;
}

- (Class)class {
    return object_getClass(self);
}

- (Class)superclass {
    return class_getSuperclass(object_getClass(self));
}

- (BOOL)isKindOfClass:(Class)aClass {
    Class cls = object_getClass(self);
    while (cls && cls != aClass)
        cls = class_getSuperclass(cls);
    // The runtime ends the chain of the classes' own classes without it.
    return cls || (aClass == [NSObject class] && class_isMetaClass(object_getClass(self)));
}

- (BOOL)isMemberOfClass:(Class)aClass {
    return object_getClass(self) == aClass;
}

- (BOOL)conformsToProtocol:(Protocol*)aProtocol {
    Class cls = object_getClass(self);
    while (cls && !class_conformsToProtocol(cls, aProtocol))
        cls = class_getSuperclass(cls);
    return cls != Nil;
}

- (BOOL)respondsToSelector:(SEL)aSelector {
    return class_respondsToSelector(object_getClass(self), aSelector);
}

// Called by the runtime for methods that there are none of.
- (id)forward:(SEL)aSelector:(void*)arguments {
    (void)arguments;
    ostrel::foundation::misuse(@"-[%s %s]: unrecognized selector sent to %p", object_getClassName(self),
                               sel_getName(aSelector), self);
}

- (id)performSelector:(SEL)aSelector {
    return perform(self, aSelector);
}

- (id)performSelector:(SEL)aSelector withObject:(id)object {
    return perform(self, aSelector, object);
}

- (id)performSelector:(SEL)aSelector withObject:(id)object1 withObject:(id)object2 {
    return perform(self, aSelector, object1, object2);
}

@end
