#import <Foundation/Foundation.h>

#include "platform/Foundation/failure.h"

#import <objc/runtime.h>

#include <pthread.h>
#include <vector>

using ostrel::foundation::misuse;

namespace {

struct Thread {
    NSAutoreleasePool* innermost = nil;
    std::vector<id> objects; // of all its pools, the outermost pool's first
};

thread_local Thread* t_thread = nullptr;

void endThread(void*) {
    while (t_thread->innermost)
        [t_thread->innermost release];
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

@implementation NSAutoreleasePool

+ (void)addObject:(id)object {
    Thread& thread = thisThread();
    if (!thread.innermost)
        return NSLog(@"%p of class %s leaks: autoreleased with no pool in place", object,
                     object_getClassName(object));
    const ostrel::foundation::ReleasedOnException guard{object};
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
