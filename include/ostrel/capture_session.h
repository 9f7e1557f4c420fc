// The capture session: opens a camera through QTKit and keeps its newest frame. For Objective-C++ clients;
// others use capture.h, whose driver owns one session each.
#ifndef OSTREL_CAPTURE_SESSION_H
#define OSTREL_CAPTURE_SESSION_H

#include <ostrel/export.h>

#import <CoreVideo/CoreVideo.h>
#import <Foundation/Foundation.h>
#import <QTKit/QTKit.h>

#include <stdint.h>
#include <string>

// Frames arrive on the framework's delivery thread; every other method belongs to the client. Manual
// reference counting. setCamera, startObjCapture, stopObjCapture and the last release are not synchronised
// with each other; videoFrame may run beside the delivery.
OSTREL_EXPORT
@interface VideoCaptureThreadObj : NSObject {
@public
    uint32_t m_capturedFrameCounter; // frames since the start; read it with a relaxed atomic load
@protected
    std::string m_cameraId;          // UTF-8
    int64_t m_width;                 // pixels
    int64_t m_height;                // pixels
    CVBufferRef m_lastCapturedFrame; // retained
    NSAutoreleasePool* pool;
    QTCaptureSession* session;
    QTCaptureDeviceInput* input;
    QTCaptureDecompressedVideoOutput* output;
    QTCaptureDevice* cam;
}

- (id)init;

// Which camera to open (its exact identifier, UTF-8, ends with a NUL; copied) and the frame size in pixels.
// Nothing is checked or opened. Throws std::logic_error when cameraId is null.
- (void)setCamera:(const char*)cameraId withWidth:(int64_t)width withHeigth:(int64_t)height;

// Opens the camera and starts it. Failures are reported on standard error and by NSLog only.
- (void)startObjCapture;

// Stops the delivery of frames. The last frame stays available, the camera stays open.
- (void)stopObjCapture;

// Copies the newest frame to buffer. size: in, the bytes that buffer holds; out, the bytes copied: all of
// them when the frame has exactly that size (rows of width * 4 bytes: B, G, R, A), else 0 with buffer
// untouched.
- (void)videoFrame:(char*)buffer withSize:(int64_t*)size;

// Called by the framework on its delivery thread.
- (void)captureOutput:(QTCaptureOutput*)captureOutput
    didOutputVideoFrame:(CVImageBufferRef)videoFrame
       withSampleBuffer:(QTSampleBuffer*)sampleBuffer
         fromConnection:(QTCaptureConnection*)connection;

- (void)dealloc;

@end

#endif
