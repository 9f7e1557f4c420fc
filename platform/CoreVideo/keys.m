#import <CoreVideo/CoreVideo.h>
#import <Foundation/Foundation.h>

const CFStringRef kCVPixelBufferPixelFormatTypeKey = (CFStringRef) @"PixelFormatType";
const CFStringRef kCVPixelBufferWidthKey = (CFStringRef) @"Width";
const CFStringRef kCVPixelBufferHeightKey = (CFStringRef) @"Height";
