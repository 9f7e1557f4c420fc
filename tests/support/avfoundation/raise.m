#import <Foundation/Foundation.h>

// Foundation's own class of exceptions is not needed: whoever catches one asks for its description alone.
@interface StandInException : NSObject {
@private
    NSString* reason;
}
- (id)initWithReason:(NSString*)newReason;
@end

@implementation StandInException
- (id)initWithReason:(NSString*)newReason {
    if ((self = [super init]))
        reason = [newReason retain];
    return self;
}
- (void)dealloc {
    [reason release];
    [super dealloc];
}
- (NSString*)description {
    return reason;
}
@end

void ostrelRaise(NSString* reason) {
    @throw [[[StandInException alloc] initWithReason:reason] autorelease];
}
