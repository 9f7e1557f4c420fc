// Forms the bytes of a frame that is too large in signed arithmetic.
#import <Foundation/Foundation.h>

@interface Camera : NSObject
- (int)bytesForWidth:(int)width height:(int)height;
@end

@implementation Camera
- (int)bytesForWidth:(int)width height:(int)height {
    return width * height * 4;
}
@end

int main(int argc, char**) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    Camera* camera = [[Camera alloc] init];
    const int bytes = [camera bytesForWidth:60000 + argc height:60000];
    [camera release];
    [pool release];
    return bytes == 0;
}
