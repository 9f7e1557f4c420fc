#include "support/avfoundation/state.h"

#import <Foundation/NSNotification.h>

#include <algorithm>
#include <mutex>
#include <vector>

@interface NSNotification (StandIn)
- (id)initWithName:(NSString*)newName object:(id)newObject userInfo:(NSDictionary*)newInfo;
@end

@implementation NSNotification
- (id)initWithName:(NSString*)newName object:(id)newObject userInfo:(NSDictionary*)newInfo {
    if ((self = [super init])) {
        name = [newName retain];
        object = [newObject retain];
        userInfo = [newInfo retain];
    }
    return self;
}
- (void)dealloc {
    [name release];
    [object release];
    [userInfo release];
    [super dealloc];
}
- (NSString*)name {
    return name;
}
- (id)object {
    return object;
}
- (NSDictionary*)userInfo {
    return userInfo;
}
@end

namespace {

struct Observation {
    id observer; // not retained
    SEL selector;
    NSString* name; // a constant
    id object;      // not retained; nil: any
};

std::mutex g_mutex;
std::vector<Observation> g_observations;

// Each retained, as the framework does with observers that it refers to weakly.
std::vector<Observation> observersOf(NSString* name, id object) {
    const std::lock_guard<std::mutex> lock(g_mutex);
    std::vector<Observation> found;
    for (const Observation& one : g_observations)
        if ([one.name isEqualToString:name] && (!one.object || one.object == object)) {
            [one.observer retain];
            found.push_back(one);
        }
    return found;
}

} // namespace

int ostrel::support::avfoundation::observations() {
    const std::lock_guard<std::mutex> lock(g_mutex);
    return static_cast<int>(g_observations.size());
}

@implementation NSNotificationCenter

+ (NSNotificationCenter*)defaultCenter {
    static NSNotificationCenter* const center = [[NSNotificationCenter alloc] init];
    return center;
}

- (void)addObserver:(id)observer selector:(SEL)aSelector name:(NSString*)aName object:(id)anObject {
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_observations.push_back({observer, aSelector, aName, anObject});
}

- (void)removeObserver:(id)observer {
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_observations.erase(std::remove_if(g_observations.begin(), g_observations.end(),
                                        [&](const Observation& one) { return one.observer == observer; }),
                         g_observations.end());
}

- (void)postNotificationName:(NSString*)aName object:(id)anObject userInfo:(NSDictionary*)aUserInfo {
    NSNotification* const note = [[NSNotification alloc] initWithName:aName
                                                               object:anObject
                                                             userInfo:aUserInfo];
    for (const Observation& one : observersOf(aName, anObject)) {
        [one.observer performSelector:one.selector withObject:note];
        [one.observer release];
    }
    [note release];
}

@end
