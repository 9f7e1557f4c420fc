#import <Foundation/Foundation.h>

#include "base/autorelease_scope.h"
#include "platform/Foundation/failure.h"

#import <objc/runtime.h>

#include <pthread.h>
#include <vector>

using ostrel::AutoreleaseScope;
using ostrel::foundation::misuse;

namespace ostrel {

struct ThreadsPools {
    NSAutoreleasePool* innermost = nil;
    std::vector<id> objects;           // of all its pools, the outermost pool's first
    AutoreleaseScope* scope = nullptr; // the innermost

    void leave(AutoreleaseScope& left) {
        releaseWithin(left.outerPool_);
        scope = left.outerScope_;
    }
    // For an object that is being autoreleased.
    void makePoolOfScope() {
        if (scope && innermost == scope->outerPool_)
            [[NSAutoreleasePool alloc] init];
    }
    // Nil: all there are.
    void releaseWithin(NSAutoreleasePool* outer) {
        while (innermost && innermost != outer)
            [innermost release];
    }
};

} // namespace ostrel

namespace {

using Thread = ostrel::ThreadsPools;

thread_local Thread* t_thread = nullptr;

void endThread(void*) {
    t_thread->releaseWithin(nil);
    delete t_thread;
    t_thread = nullptr;
}

// By pthread's means, as destructors of C++ would run on the main thread as well, when the program ends.
Thread& thisThread() {
    static const pthread_key_t key = [] {
        pthread_key_t made;
        pthread_key_create(&made, endThread);
        return made;
    }();
    if (!t_thread) {
        t_thread = new Thread;
        pthread_setspecific(key, t_thread);
    }
    return *t_thread;
}

} // namespace

AutoreleaseScope::AutoreleaseScope() : outerPool_(thisThread().innermost), outerScope_(thisThread().scope) {
    thisThread().scope = this;
}

AutoreleaseScope::~AutoreleaseScope() {
    thisThread().leave(*this);
}

@implementation NSAutoreleasePool

+ (void)addObject:(id)object {
    const ostrel::foundation::ReleasedOnException guard{object};
    Thread& thread = thisThread();
    thread.makePoolOfScope();
    if (!thread.innermost)
        return NSLog(@"%p of class %s leaks: autoreleased with no pool in place", object,
                     object_getClassName(object));
    thread.objects.push_back(object);
}

// What may throw comes first: a pool that is no thread's could not be released.
+ (id)alloc {
    thisThread();
    return [super alloc];
}

- (id)init {
    Thread& thread = thisThread();
    outer = thread.innermost;
    first = thread.objects.size();
    thread.innermost = self;
    return self;
}

- (void)dealloc {
    Thread& thread = thisThread();
    NSAutoreleasePool* each = thread.innermost;
    while (each && each != self)
        each = each->outer;
    if (!each)
        misuse(@"NSAutoreleasePool %p is drained on a thread that has no such pool", self);
    // Released objects may autorelease others and leave pools behind.
    while (thread.innermost != self || thread.objects.size() > first) {
        if (thread.innermost != self) {
            [thread.innermost release];
            continue;
        }
        id last = thread.objects.back();
        thread.objects.pop_back();
        [last release];
    }
    thread.innermost = outer;
    [super dealloc];
}

- (void)drain {
    [self release];
}

- (id)retain {
    misuse(@"-[NSAutoreleasePool retain]: a pool cannot be retained");
}

- (id)autorelease {
    misuse(@"-[NSAutoreleasePool autorelease]: a pool cannot be autoreleased");
}

@end
