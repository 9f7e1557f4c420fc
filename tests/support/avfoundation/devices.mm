#include "support/avfoundation/state.h"

#include <algorithm>
#include <cmath>

using namespace ostrel::support::avfoundation;

NSString* const AVMediaTypeVideo = @"vide";
NSString* const AVCaptureDeviceTypeBuiltInWideAngleCamera = @"AVCaptureDeviceTypeBuiltInWideAngleCamera";
NSString* const AVCaptureDeviceWasConnectedNotification = @"AVCaptureDeviceWasConnectedNotification";
NSString* const AVCaptureDeviceWasDisconnectedNotification = @"AVCaptureDeviceWasDisconnectedNotification";
// Found by name, as by a program that also runs on systems without it.
extern "C" {
OSTREL_EXPORT extern NSString* const AVCaptureDeviceTypeExternal;
NSString* const AVCaptureDeviceTypeExternal = @"AVCaptureDeviceTypeExternal";
}

struct opaqueCMFormatDescription {
    const Format script;
};

CMVideoDimensions CMVideoFormatDescriptionGetDimensions(CMVideoFormatDescriptionRef description) {
    return {description->script.width, description->script.height};
}

FourCharCode CMFormatDescriptionGetMediaSubType(CMFormatDescriptionRef description) {
    return description->script.subtype;
}

const CMTime kCMTimeInvalid = {};

CMTime CMTimeMake(int64_t value, int32_t timescale) {
    return {value, timescale, 1, 0};
}

namespace {

struct Range {
    CMTime shortest, longest;
};

CMTime durationAt(double rate) {
    return CMTimeMake(1000, static_cast<int32_t>(std::lround(rate * 1000)));
}

std::vector<Range> rangesOf(const Format& script) {
    std::vector<Range> ranges = {{durationAt(script.rate), durationAt(script.slowest)}};
    for (const double rate : script.otherRates)
        ranges.push_back({durationAt(rate), durationAt(rate)});
    return ranges;
}

bool isShorter(const CMTime& one, const CMTime& other) {
    return one.value * other.timescale < other.value * one.timescale;
}

bool isOffered(const CMTime& duration, const Format& script) {
    if (!duration.flags)
        return true;
    const std::vector<Range> ranges = rangesOf(script);
    return std::any_of(ranges.begin(), ranges.end(), [&](const Range& range) {
        return !isShorter(duration, range.shortest) && !isShorter(range.longest, duration);
    });
}

void setDuration(AVCaptureDevice* device, CMTime DeviceState::*duration, const CMTime& value) {
    bool raises = false;
    {
        const WorldLock lock(world().mutex);
        DeviceState& own = stateOf(device);
        raises = own.locks == 0 || !isOffered(value, scriptOf(own.active));
        if (!raises)
            own.*duration = value;
    }
    if (raises)
        ostrelRaise(@"-[AVCaptureDevice setActiveVideoFrameDuration:] Unsupported frame duration");
}

} // namespace

@implementation AVFrameRateRange
- (id)initWithRange:(const Range&)range {
    if ((self = [super init]))
        state = new Range(range);
    return self;
}
- (void)dealloc {
    delete static_cast<Range*>(state);
    [super dealloc];
}
- (CMTime)minFrameDuration {
    return static_cast<Range*>(state)->shortest;
}
- (CMTime)maxFrameDuration {
    return static_cast<Range*>(state)->longest;
}
@end

@implementation AVCaptureDeviceFormat
- (id)initWithScript:(const Format&)script {
    if ((self = [super init]))
        state = new opaqueCMFormatDescription{script};
    return self;
}
- (void)dealloc {
    delete static_cast<opaqueCMFormatDescription*>(state);
    [super dealloc];
}
- (CMFormatDescriptionRef)formatDescription {
    return static_cast<opaqueCMFormatDescription*>(state);
}
- (NSArray*)videoSupportedFrameRateRanges {
    NSMutableArray* const ranges = [NSMutableArray array];
    for (const Range& one : rangesOf([self formatDescription]->script))
        [ranges addObject:[[[AVFrameRateRange alloc] initWithRange:one] autorelease]];
    return ranges;
}
@end

const Format& ostrel::support::avfoundation::scriptOf(AVCaptureDeviceFormat* format) {
    return [format formatDescription]->script;
}

@implementation AVCaptureDevice

- (id)initWithScript:(const Device&)script {
    if ((self = [super init])) {
        auto* const own = new DeviceState;
        own->script = script;
        NSMutableArray* const formats = [[NSMutableArray alloc] init];
        for (const Format& one : script.formats) {
            AVCaptureDeviceFormat* const format = [[AVCaptureDeviceFormat alloc] initWithScript:one];
            [formats addObject:format];
            [format release];
        }
        own->formats = formats;
        own->active = [formats objectAtIndex:0];
        state = own;
    }
    return self;
}
- (void)dealloc {
    auto* const own = static_cast<DeviceState*>(state);
    [own->formats release];
    delete own;
    [super dealloc];
}
- (DeviceState*)standInState {
    return static_cast<DeviceState*>(state);
}

+ (AVAuthorizationStatus)authorizationStatusForMediaType:(NSString*)mediaType {
    const WorldLock lock(world().mutex);
    if (![mediaType isEqualToString:AVMediaTypeVideo])
        noteMisuse("asked for the permission of something else");
    return world().authorization;
}
- (NSString*)uniqueID {
    return text(stateOf(self).script.identifier);
}
- (NSString*)localizedName {
    return text(stateOf(self).script.name);
}
- (NSString*)modelID {
    return text(stateOf(self).script.model);
}
- (BOOL)isConnected {
    const WorldLock lock(world().mutex);
    return stateOf(self).connected;
}
- (NSArray*)formats {
    return stateOf(self).formats;
}
- (AVCaptureDeviceFormat*)activeFormat {
    const WorldLock lock(world().mutex);
    return stateOf(self).active;
}
- (void)setActiveFormat:(AVCaptureDeviceFormat*)format {
    bool raises = false;
    {
        const WorldLock lock(world().mutex);
        raises = stateOf(self).locks == 0 || scriptOf(format).refused;
        if (!raises && stateOf(self).active != format) {
            stateOf(self).active = format;
            stateOf(self).shortest = stateOf(self).longest = kCMTimeInvalid;
        }
    }
    if (raises)
        ostrelRaise(@"-[AVCaptureDevice setActiveFormat:] Unsupported format");
}
- (CMTime)activeVideoMinFrameDuration {
    const WorldLock lock(world().mutex);
    const DeviceState& own = stateOf(self);
    return own.shortest.flags ? own.shortest : durationAt(scriptOf(own.active).rate);
}
- (void)setActiveVideoMinFrameDuration:(CMTime)duration {
    setDuration(self, &DeviceState::shortest, duration);
}
- (void)setActiveVideoMaxFrameDuration:(CMTime)duration {
    setDuration(self, &DeviceState::longest, duration);
}
- (BOOL)lockForConfiguration:(NSError**)outError {
    const WorldLock lock(world().mutex);
    if (world().trouble == Trouble::NotLocked) {
        if (outError)
            *outError = [NSError errorWithDomain:@"AVFoundationErrorDomain" code:-11819 userInfo:nil];
        return NO;
    }
    ++stateOf(self).locks;
    return YES;
}
- (void)unlockForConfiguration {
    const WorldLock lock(world().mutex);
    if (stateOf(self).locks-- == 0)
        noteMisuse("unlocked what was not locked");
}
@end

DeviceState& ostrel::support::avfoundation::stateOf(AVCaptureDevice* device) {
    return *[device standInState];
}

@implementation AVCaptureDeviceDiscoverySession
+ (id)discoverySessionWithDeviceTypes:(NSArray*)deviceTypes
                            mediaType:(NSString*)mediaType
                             position:(AVCaptureDevicePosition)position {
    AVCaptureDeviceDiscoverySession* const session = [[[self alloc] init] autorelease];
    NSMutableArray* const found = [[NSMutableArray alloc] init];
    const WorldLock lock(world().mutex);
    if (![mediaType isEqualToString:AVMediaTypeVideo] || position != AVCaptureDevicePositionUnspecified)
        noteMisuse("asked for other devices than cameras");
    for (AVCaptureDevice* device : world().listed)
        if ([deviceTypes containsObject:text(stateOf(device).script.type)])
            [found addObject:device];
    session->devices = found;
    return session;
}
- (void)dealloc {
    [devices release];
    [super dealloc];
}
- (NSArray*)devices {
    return devices;
}
@end
