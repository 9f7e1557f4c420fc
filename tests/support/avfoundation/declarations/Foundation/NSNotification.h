// Notifications by their published names: what the library uses of them. Ours of Linux has none.
#ifndef OSTREL_TESTS_AVFOUNDATION_NSNOTIFICATION_H
#define OSTREL_TESTS_AVFOUNDATION_NSNOTIFICATION_H

#import <Foundation/Foundation.h>

@interface NSNotification : NSObject {
@private
    NSString* name;
    id object;
    NSDictionary* userInfo;
}
- (NSString*)name;
- (id)object;
- (NSDictionary*)userInfo;
@end

@interface NSNotificationCenter : NSObject
+ (NSNotificationCenter*)defaultCenter;
- (void)addObserver:(id)observer selector:(SEL)aSelector name:(NSString*)aName object:(id)anObject;
- (void)removeObserver:(id)observer;
- (void)postNotificationName:(NSString*)aName object:(id)anObject userInfo:(NSDictionary*)aUserInfo;
@end

#endif
