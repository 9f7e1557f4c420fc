// What comes out of a capture session.
#ifndef OSTREL_QTKIT_QTCAPTUREOUTPUT_H
#define OSTREL_QTKIT_QTCAPTUREOUTPUT_H

#include <ostrel/export.h>

#import <CoreVideo/CoreVideo.h>
#import <Foundation/Foundation.h>

@class QTCaptureConnection;
@class QTSampleBuffer;

OSTREL_EXPORT
@interface QTCaptureOutput : NSObject
@end

struct QTCaptureOutputState;

// Delivers pixel buffers to its delegate. Settings other than the delegate are read when the session starts
// the camera, which it does as soon as it has an input and an output.
OSTREL_EXPORT
@interface QTCaptureDecompressedVideoOutput : QTCaptureOutput {
@private
    struct QTCaptureOutputState* state;
}

// Wanted are kCVPixelBufferWidthKey and kCVPixelBufferHeightKey (NSNumbers, pixels); without them frames are
// 640 x 480. The format is always kCVPixelFormatType_32BGRA; a session refuses an output that asks for
// another.
- (void)setPixelBufferAttributes:(NSDictionary*)attributes;
- (NSDictionary*)pixelBufferAttributes;

// Frames that come while the delegate is busy are always dropped in favour of the newest.
- (void)setAutomaticallyDropsLateVideoFrames:(BOOL)drops;

// Seconds; frames that come sooner after the one before are left out. 0: all frames.
- (void)setMinimumVideoFrameInterval:(NSTimeInterval)interval;

// Not retained.
- (void)setDelegate:(id)delegate;
- (id)delegate;

@end

@interface NSObject (QTCaptureDecompressedVideoOutput_Delegate)
// On the session's delivery thread, one call at a time. The frame is valid during the call unless it is
// retained. sampleBuffer and connection are nil.
- (void)captureOutput:(QTCaptureOutput*)captureOutput
    didOutputVideoFrame:(CVImageBufferRef)videoFrame
       withSampleBuffer:(QTSampleBuffer*)sampleBuffer
         fromConnection:(QTCaptureConnection*)connection;
@end

#endif
