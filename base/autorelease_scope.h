// A pool for what is autoreleased in a scope, as the caller's thread may have none.
#ifndef OSTREL_BASE_AUTORELEASE_SCOPE_H
#define OSTREL_BASE_AUTORELEASE_SCOPE_H

#import <Foundation/Foundation.h>

namespace ostrel {

// Throws std::bad_alloc.
class AutoreleaseScope {
public:
    AutoreleaseScope();
    ~AutoreleaseScope();
    AutoreleaseScope(const AutoreleaseScope&) = delete;
    AutoreleaseScope& operator=(const AutoreleaseScope&) = delete;

private:
#ifdef OSTREL_OWN_FOUNDATION
    // Makes its pool once something is autoreleased: most scopes need none, and pools are dear to make.
    friend struct ThreadsPools;
    NSAutoreleasePool* const outerPool_;
    AutoreleaseScope* const outerScope_;
#else
    NSAutoreleasePool* const pool_;
#endif
};

#ifndef OSTREL_OWN_FOUNDATION
inline AutoreleaseScope::AutoreleaseScope() : pool_([[NSAutoreleasePool alloc] init]) {}
inline AutoreleaseScope::~AutoreleaseScope() {
    [pool_ release];
}
#endif

} // namespace ostrel

#endif
