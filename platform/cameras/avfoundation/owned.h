// Objective-C objects in C++: who owns them, and for how long what they autorelease lives.
#ifndef OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_OWNED_H
#define OSTREL_PLATFORM_CAMERAS_AVFOUNDATION_OWNED_H

#import <Foundation/Foundation.h>

namespace ostrel {
namespace cameras {
namespace avfoundation {

// An object with one reference, which it takes over. Nil is an object too.
template <typename Object>
class Owned {
public:
    explicit Owned(Object* object = nil) : object_(object) {}
    ~Owned() { [object_ release]; }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    Object* get() const { return object_; }
    void reset(Object* object = nil) {
        Object* const before = object_;
        object_ = object;
        [before release];
    }

private:
    Object* object_;
};

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel

#endif
