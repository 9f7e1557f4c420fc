// The root of the classes. Counts of owners are atomic; what else an object says of threads is its class's
// affair.
#ifndef OSTREL_FOUNDATION_NSOBJECT_H
#define OSTREL_FOUNDATION_NSOBJECT_H

#import <Foundation/NSObjCRuntime.h>

@class Protocol;
typedef struct _NSZone NSZone; // looked at by nobody

@protocol NSObject
- (BOOL)isEqual:(id)object;
- (NSUInteger)hash;
- (NSString*)description;
- (id)self;
- (Class)class;
- (Class)superclass;
- (BOOL)isKindOfClass:(Class)aClass;
- (BOOL)isMemberOfClass:(Class)aClass;
- (BOOL)conformsToProtocol:(Protocol*)aProtocol;
- (BOOL)respondsToSelector:(SEL)aSelector;
- (id)performSelector:(SEL)aSelector;
- (id)performSelector:(SEL)aSelector withObject:(id)object;
- (id)performSelector:(SEL)aSelector withObject:(id)object1 withObject:(id)object2;
- (id)retain;
- (oneway void)release;
- (id)autorelease;
- (NSUInteger)retainCount;
@end

@protocol NSCopying
- (id)copyWithZone:(NSZone*)zone;
@end

__attribute__((objc_root_class))
@interface NSObject<NSObject> {
    Class isa;
}
+ (void)initialize;
+ (id)alloc; // variables are zero, those of C++ constructed
+ (id)new;
+ (Class)class;
+ (Class)superclass;
+ (NSString*)description;
- (id)init;
- (id)copy;
- (void)dealloc;
@end

#endif
