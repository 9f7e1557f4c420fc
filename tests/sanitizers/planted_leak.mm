// Loses the only pointer to a block, in a method that also logs, as our session does.
#import <Foundation/Foundation.h>

#include <cstring>

@interface Camera : NSObject
- (void)keepFrame;
@end

@implementation Camera
- (void)keepFrame {
    char* volatile frame = new char[1000];
    std::memset(frame, 1, 1000);
    NSLog(@"frame kept: %d", frame[0]);
    frame = nullptr;
}
@end

int main() {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Camera* camera = [[Camera alloc] init];
    [camera keepFrame];
    [camera release];
    [pool release];
    return 0;
}
