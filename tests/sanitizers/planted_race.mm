// Two threads count frames in an instance variable without a lock.
#import <Foundation/Foundation.h>

#include <thread>

@interface Camera : NSObject {
@public
    unsigned frames;
}
- (void)countFrame;
@end

@implementation Camera
- (void)countFrame {
    ++frames;
}
@end

int main() {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Camera* camera = [[Camera alloc] init];
    const auto count = [camera] {
        for (int frame = 0; frame < 100000; ++frame)
            [camera countFrame];
    };
    std::thread other(count);
    count();
    other.join();
    [camera release];
    [pool release];
    return 0;
}
