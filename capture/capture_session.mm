#import <ostrel/capture_session.h>

#include "base/fast_enumeration.h"
#include "base/text.h"
#include "capture/diagnostics.h"
#include "capture/replaced_sessions.h"

#include <string.h>

// Threads: the client's (setCamera, videoFrame, stopObjCapture, dealloc), the one that runs startObjCapture,
// and the framework's delivery thread (captureOutput). The object's own lock guards changes of
// m_lastCapturedFrame and m_capturedFrameCounter and the copy out of the frame. Both are also read without
// it, by relaxed atomic loads.

namespace {

ostrel::ReplacedSessions& replacedSessions() {
    // Never destroyed: sessions may outlive the static objects.
    static ostrel::ReplacedSessions* const instance = new ostrel::ReplacedSessions;
    return *instance;
}

QTCaptureDevice* cameraWithIdentifier(const std::string& identifier) {
    QTCaptureDevice* found = nil;
    ostrel::forEachObject([QTCaptureDevice inputDevicesWithMediaType:QTMediaTypeVideo], [&](id device) {
        if (ostrel::requiredText([[device uniqueID] UTF8String]) == identifier)
            found = device;
        return found == nil;
    });
    return found;
}

void logError(NSString* what, NSError* error) {
    if (!ostrel::diagnostics::Silence::isKept())
        NSLog(@"%@: %@", what, error);
}

// The framework takes the size as unsigned 32-bit numbers.
NSDictionary* pixelBufferAttributes(int64_t width, int64_t height) {
    return [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithUnsignedInt:(unsigned int)width],
                                     (id)kCVPixelBufferWidthKey,
                                     [NSNumber numberWithUnsignedInt:(unsigned int)height],
                                     (id)kCVPixelBufferHeightKey,
                                     [NSNumber numberWithUnsignedInt:(unsigned int)kCVPixelFormatType_32BGRA],
                                     (id)kCVPixelBufferPixelFormatTypeKey, nil];
}

} // namespace

@implementation VideoCaptureThreadObj

- (id)init {
    return [super init];
}

- (void)setCamera:(const char*)cameraId withWidth:(int64_t)width withHeigth:(int64_t)height {
    m_width = width;
    m_height = height;
    m_cameraId = ostrel::requiredText(cameraId);
}

- (void)startObjCapture {
    if (session != nil)
        replacedSessions().add(self, session, cam);
    // Never drained: what is autoreleased here lives until the thread ends.
    pool = [[NSAutoreleasePool alloc] init];
    cam = nil;
    cam = cameraWithIdentifier(m_cameraId);
    if (cam == nil) {
        ostrel::diagnostics::line(">>> camera failed");
        return;
    }
    NSError* error = nil;
    if (![cam open:&error]) {
        logError(@"Error opening camera", error);
        return;
    }
    input = [[QTCaptureDeviceInput alloc] initWithDevice:cam];
    session = [[QTCaptureSession alloc] init];
    if (![session addInput:input error:&error]) {
        logError(@"Error adding input to capture session", error);
        return;
    }
    output = [[QTCaptureDecompressedVideoOutput alloc] init];
    [output setPixelBufferAttributes:pixelBufferAttributes(m_width, m_height)];
    [output setAutomaticallyDropsLateVideoFrames:YES];
    [output setMinimumVideoFrameInterval:0.0];
    [output setDelegate:self];
    // A refused output does not end the start-up: the session runs, without frames.
    if (![session addOutput:output error:&error])
        logError(@"Error adding output to capture session", error);
    __atomic_store_n(&m_capturedFrameCounter, 0, __ATOMIC_RELAXED);
    ostrel::diagnostics::line(">>> starting session");
    [session startRunning];
    // startRunning has returned at once and the session is running; the wording is an old one.
    ostrel::diagnostics::line(">>> session stopped");
}

- (void)stopObjCapture {
    if ([session isRunning])
        [session stopRunning];
}

- (void)captureOutput:(QTCaptureOutput*)captureOutput
    didOutputVideoFrame:(CVImageBufferRef)videoFrame
       withSampleBuffer:(QTSampleBuffer*)sampleBuffer
         fromConnection:(QTCaptureConnection*)connection {
    (void)captureOutput;
    (void)sampleBuffer;
    (void)connection;
    CVBufferRef old;
    CVBufferRetain(videoFrame);
    @synchronized(self) {
        old = m_lastCapturedFrame;
        __atomic_store_n(&m_lastCapturedFrame, videoFrame, __ATOMIC_RELAXED);
        // A second start sets the counter back without the lock.
        __atomic_fetch_add(&m_capturedFrameCounter, 1, __ATOMIC_RELAXED);
    }
    CVBufferRelease(old);
}

- (void)videoFrame:(char*)buffer withSize:(int64_t*)size {
    const int64_t capacity = *size;
    *size = 0;
    if (!__atomic_load_n(&m_lastCapturedFrame, __ATOMIC_RELAXED))
        return;
    CVBufferRef frame;
    @synchronized(self) {
        frame = CVBufferRetain(m_lastCapturedFrame);
        if (!frame)
            return;
        CVPixelBufferLockBaseAddress(frame, 0);
        const void* base = CVPixelBufferGetBaseAddress(frame);
        const int64_t bytes =
            static_cast<int64_t>(CVPixelBufferGetBytesPerRow(frame) * CVPixelBufferGetHeight(frame));
        if (base && bytes == capacity) {
            memcpy(buffer, base, static_cast<size_t>(bytes));
            *size = bytes;
        } else {
            ostrel::diagnostics::line(bytes);
        }
        CVPixelBufferUnlockBaseAddress(frame, 0);
    }
    CVBufferRelease(frame);
}

- (void)dealloc {
    const std::vector<ostrel::ReplacedSessions::Entry> replaced = replacedSessions().take(self);
    ostrel::diagnostics::line("stopping session");
    [session stopRunning];
    for (size_t i = 0; i < replaced.size(); ++i)
        [replaced[i].first stopRunning];
    ostrel::diagnostics::line("closing camera");
    [cam close];
    for (size_t i = 0; i < replaced.size(); ++i)
        [replaced[i].second close];
    ostrel::diagnostics::line("removing input-output");
    // The session, its input and output and the pool are not given back: they are small, and the framework
    // may still refer to them.
    CVBufferRelease(m_lastCapturedFrame);
    m_lastCapturedFrame = NULL;
    [super dealloc];
}

@end
