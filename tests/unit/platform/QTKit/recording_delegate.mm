#import "recording_delegate.h"

@implementation RecordingDelegate

- (void)captureOutput:(QTCaptureOutput*)captureOutput
    didOutputVideoFrame:(CVImageBufferRef)videoFrame
       withSampleBuffer:(QTSampleBuffer*)sampleBuffer
         fromConnection:(QTCaptureConnection*)connection {
    (void)captureOutput;
    (void)sampleBuffer;
    (void)connection;
    listener->frameArrived(videoFrame);
}

@end

namespace ostrel::support {

void Recording::frameArrived(CVImageBufferRef frame) {
    ++inProgress;
    ++calls;
    CVBufferRetain(frame);
    CVBufferRelease(newest);
    newest = frame;
    if (onFrame)
        onFrame(frame);
    --inProgress;
}

QTCaptureDevice* FrameworkTest::device(const std::string& identifier) {
    NSArray* const devices = [QTCaptureDevice inputDevicesWithMediaType:QTMediaTypeVideo];
    for (NSUInteger i = 0; i < [devices count]; ++i) {
        QTCaptureDevice* const each = [devices objectAtIndex:i];
        if (identifier == [[each uniqueID] UTF8String])
            return each;
    }
    return nil;
}

Rig::Rig(QTCaptureDevice* openedDevice, unsigned width, unsigned height)
    : device(openedDevice), session([[QTCaptureSession alloc] init]),
      input([[QTCaptureDeviceInput alloc] initWithDevice:openedDevice]),
      output([[QTCaptureDecompressedVideoOutput alloc] init]), delegate([[RecordingDelegate alloc] init]) {
    NSDictionary* const attributes = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithUnsignedInt:width], (id)kCVPixelBufferWidthKey,
                                     [NSNumber numberWithUnsignedInt:height], (id)kCVPixelBufferHeightKey,
                                     nil];
    [output setPixelBufferAttributes:attributes];
    delegate->listener = &seen;
    [output setDelegate:delegate];
    inputAdded = [session addInput:input error:&error];
    outputAdded = [session addOutput:output error:&error];
}

Rig::~Rig() {
    [session stopRunning];
    [session release];
    [input release];
    [output release];
    [delegate release];
}

int Rig::newestNumber() const {
    if (!seen.newest || CVPixelBufferLockBaseAddress(seen.newest, 0) != kCVReturnSuccess)
        return -1;
    const auto* const base = static_cast<const uint8_t*>(CVPixelBufferGetBaseAddress(seen.newest));
    const int number =
        numberIn(base, CVPixelBufferGetBytesPerRow(seen.newest) * CVPixelBufferGetHeight(seen.newest));
    CVPixelBufferUnlockBaseAddress(seen.newest, 0);
    return number;
}

} // namespace ostrel::support
