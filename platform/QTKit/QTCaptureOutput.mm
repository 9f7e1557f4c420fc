#import <QTKit/QTCaptureOutput.h>

#include "base/autorelease_scope.h"
#include "platform/QTKit/output_state.h"

@interface QTCaptureDecompressedVideoOutput (OstrelPrivate)
- (QTCaptureOutputState*)state;
@end

QTCaptureOutputState& ostrel::stateOf(QTCaptureDecompressedVideoOutput* output) {
    return *[output state];
}

namespace {

void readNumber(NSDictionary* attributes, CFStringRef key, uint32_t& number) {
    id value = [attributes objectForKey:(NSString*)key];
    if ([value isKindOfClass:[NSNumber class]])
        number = [value unsignedIntValue];
}

} // namespace

ostrel::FrameRequest ostrel::requestOf(QTCaptureDecompressedVideoOutput* output) {
    FrameRequest request;
    const AutoreleaseScope pool;
    NSDictionary* attributes = [output pixelBufferAttributes];
    readNumber(attributes, kCVPixelBufferWidthKey, request.width);
    readNumber(attributes, kCVPixelBufferHeightKey, request.height);
    readNumber(attributes, kCVPixelBufferPixelFormatTypeKey, request.format);
    return request;
}

@implementation QTCaptureOutput
@end

@implementation QTCaptureDecompressedVideoOutput

- (id)init {
    if ((self = [super init]))
        state = new QTCaptureOutputState;
    return self;
}

- (void)dealloc {
    [state->attributes release];
    delete state;
    [super dealloc];
}

- (QTCaptureOutputState*)state {
    return state;
}

- (void)setPixelBufferAttributes:(NSDictionary*)attributes {
    @synchronized(self) {
        NSDictionary* before = state->attributes;
        state->attributes = [attributes copy];
        [before release];
    }
}

- (NSDictionary*)pixelBufferAttributes {
    @synchronized(self) {
        return [[state->attributes retain] autorelease];
    }
}

- (void)setAutomaticallyDropsLateVideoFrames:(BOOL)drops {
    // Nothing else is offered: a delivery that falls behind takes the newest frame.
    (void)drops;
}

- (void)setMinimumVideoFrameInterval:(NSTimeInterval)interval {
    state->minimumInterval.store(interval, std::memory_order_relaxed);
}

- (void)setDelegate:(id)delegate {
    state->delegate.store(delegate, std::memory_order_release);
}

- (id)delegate {
    return state->delegate.load(std::memory_order_acquire);
}

@end
