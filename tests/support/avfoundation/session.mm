#include "support/avfoundation/state.h"

#include "base/monotonic_clock.h"

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <thread>
#include <vector>

using namespace ostrel::support::avfoundation;

NSString* const AVCaptureSessionRuntimeErrorNotification = @"AVCaptureSessionRuntimeErrorNotification";
NSString* const AVCaptureSessionWasInterruptedNotification = @"AVCaptureSessionWasInterruptedNotification";
NSString* const AVCaptureSessionInterruptionEndedNotification =
    @"AVCaptureSessionInterruptionEndedNotification";
NSString* const AVCaptureSessionErrorKey = @"AVCaptureSessionErrorKey";

struct opaqueCMSampleBuffer {
    CVPixelBufferRef picture; // retained; may be null
};

CVImageBufferRef CMSampleBufferGetImageBuffer(CMSampleBufferRef sample) {
    return sample->picture;
}

namespace {

// Of one session; each buffer that is held counts.
const int MOST_BUFFERS = 8;
// So many calls wait on a queue at most: late frames are discarded.
const int MOST_WAITING = 2;

// Where an output sends its frames.
struct Target {
    std::mutex mutex;
    id delegate = nil; // not retained
    dispatch_queue_t queue = nullptr;
    std::atomic<int> waiting{0};
    std::shared_ptr<std::atomic<int>> buffers = std::make_shared<std::atomic<int>>(0);
    bool settingsAreRight = false;
};

struct Call {
    std::shared_ptr<Target> target;
    id delegate; // as it was when the frame came
    AVCaptureOutput* output;
    opaqueCMSampleBuffer sample;
};

struct Backing {
    std::vector<unsigned char> bytes;
    std::shared_ptr<std::atomic<int>> count;
};

void letGo(void* held, const void*) {
    auto* const backing = static_cast<Backing*>(held);
    --*backing->count;
    delete backing;
}

// The last row has no padding: whoever reads it there reads beyond.
CVPixelBufferRef makePicture(const Format& format, unsigned char grey,
                             const std::shared_ptr<std::atomic<int>>& count) {
    const size_t width = static_cast<size_t>(format.sentWidth ? format.sentWidth : format.width);
    const size_t height = static_cast<size_t>(format.sentHeight ? format.sentHeight : format.height);
    const size_t stride = width * 4 + 64;
    auto* const backing =
        new Backing{std::vector<unsigned char>(stride * (height - 1) + width * 4, 0xee), count};
    for (size_t y = 0; y < height; ++y) {
        unsigned char* const row = backing->bytes.data() + y * stride;
        std::memset(row, grey, width * 4);
        for (size_t x = 0; x < width; ++x)
            row[x * 4 + 3] = static_cast<unsigned char>(x); // nobody promised 255
    }
    ++*count;
    CVPixelBufferRef picture = nullptr;
    CVPixelBufferCreateWithBytes(nullptr, width, height, kCVPixelFormatType_32BGRA, backing->bytes.data(),
                                 stride, letGo, backing, nullptr, &picture);
    return picture;
}

void callDelegate(void* context) {
    Call* const call = static_cast<Call*>(context);
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    {
        const std::lock_guard<std::mutex> lock(call->target->mutex);
        if (!call->target->delegate)
            ++world().lateCalls;
    }
    [call->delegate captureOutput:call->output didOutputSampleBuffer:&call->sample fromConnection:nil];
    --call->target->waiting;
    CVBufferRelease(call->sample.picture);
    [call->output release];
    [pool drain];
    delete call;
}

struct Session {
    AVCaptureDeviceInput* input = nil;      // retained
    AVCaptureVideoDataOutput* output = nil; // retained
    std::atomic<bool> running{false}, stopping{false};
    std::mutex mutex;
    std::condition_variable changed;
    std::thread thread;
};

} // namespace

@interface AVCaptureVideoDataOutput (StandIn)
- (const std::shared_ptr<Target>&)target;
@end

namespace {

// With what was there when the frame came, whatever has become of it since.
void enqueue(AVCaptureVideoDataOutput* output, CVPixelBufferRef picture) {
    const std::shared_ptr<Target> target = [output target];
    const std::lock_guard<std::mutex> lock(target->mutex);
    if (!target->delegate || !target->queue) {
        CVBufferRelease(picture);
        return;
    }
    ++target->waiting;
    dispatch_async_f(target->queue, new Call{target, target->delegate, [output retain], { picture }},
                     callDelegate);
}

void sendFrame(AVCaptureDevice* device, AVCaptureVideoDataOutput* output, int number) {
    Format format;
    Device script;
    {
        const WorldLock lock(world().mutex);
        if (world().trouble == Trouble::Silence || !stateOf(device).present)
            return;
        script = stateOf(device).script;
        format = scriptOf(stateOf(device).active);
    }
    const std::shared_ptr<Target> target = [output target];
    if (target->waiting >= MOST_WAITING || *target->buffers >= MOST_BUFFERS)
        return;
    const bool isNil = script.nilFrames && number % script.nilFrames == 0;
    enqueue(output, isNil ? nullptr : makePicture(format, script.grey, target->buffers));
}

void generate(Session* session) {
    AVCaptureDevice* const device = [session->input device];
    const auto period = std::chrono::nanoseconds(stateOf(device).script.period);
    for (int number = 1;; ++number) {
        NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
        sendFrame(device, session->output, number);
        [pool drain];
        std::unique_lock<std::mutex> lock(session->mutex);
        if (session->changed.wait_for(lock, period, [&] { return session->stopping.load(); }))
            return;
    }
}

} // namespace

@implementation AVCaptureInput
@end

@implementation AVCaptureOutput
@end

@implementation AVCaptureDeviceInput

- (id)initWithDevice:(AVCaptureDevice*)newDevice error:(NSError**)outError {
    Trouble trouble;
    NSInteger code = 0;
    {
        const WorldLock lock(world().mutex);
        trouble = world().trouble;
        if (world().authorization == AVAuthorizationStatusDenied)
            code = AVErrorApplicationIsNotAuthorizedToUseDevice;
        else if (!stateOf(newDevice).connected)
            code = AVErrorDeviceNotConnected;
        else if (trouble == Trouble::InUse)
            code = AVErrorDeviceInUseByAnotherApplication;
    }
    if (trouble == Trouble::OpenRaises) {
        [super dealloc];
        ostrelRaise(@"the initialiser has raised an exception");
    }
    if (code) {
        if (outError)
            *outError = [NSError errorWithDomain:@"AVFoundationErrorDomain" code:code userInfo:nil];
        [super dealloc];
        return nil;
    }
    if ((self = [super init])) {
        device = [newDevice retain];
        ++world().inputs;
    }
    return self;
}
- (void)dealloc {
    --world().inputs;
    [device release];
    [super dealloc];
}
- (AVCaptureDevice*)device {
    return device;
}
@end

@implementation AVCaptureVideoDataOutput

- (id)init {
    if ((self = [super init])) {
        state = new std::shared_ptr<Target>(std::make_shared<Target>());
        ++world().outputs;
    }
    return self;
}
- (void)dealloc {
    if ([self target]->queue)
        dispatch_release([self target]->queue);
    delete static_cast<std::shared_ptr<Target>*>(state);
    --world().outputs;
    [super dealloc];
}
- (const std::shared_ptr<Target>&)target {
    return *static_cast<std::shared_ptr<Target>*>(state);
}
- (void)setVideoSettings:(NSDictionary*)videoSettings {
    id const format = [videoSettings objectForKey:(id)kCVPixelBufferPixelFormatTypeKey];
    [self target]->settingsAreRight =
        [videoSettings count] == 1 && [format unsignedIntValue] == kCVPixelFormatType_32BGRA;
}
- (void)setAlwaysDiscardsLateVideoFrames:(BOOL)discards {
    if (!discards)
        noteMisuse("wants frames that are late");
}
- (void)setSampleBufferDelegate:(id<AVCaptureVideoDataOutputSampleBufferDelegate>)delegate
                          queue:(dispatch_queue_t)queue {
    dispatch_queue_t before;
    {
        const std::lock_guard<std::mutex> lock([self target]->mutex);
        before = [self target]->queue;
        if (queue)
            dispatch_retain(queue);
        [self target]->delegate = delegate;
        [self target]->queue = queue;
    }
    if (before)
        dispatch_release(before);
}
@end

@interface AVCaptureSession (StandIn)
- (void)fail:(const char*)why;
@end

@implementation AVCaptureSession

- (Session*)own {
    return static_cast<Session*>(state);
}
- (id)init {
    if ((self = [super init])) {
        state = new Session;
        ++world().sessions;
    }
    return self;
}
- (void)dealloc {
    [self stopRunning];
    Session* const own = [self own];
    [own->input release];
    [own->output release];
    delete own;
    --world().sessions;
    [super dealloc];
}
- (BOOL)canAddInput:(AVCaptureInput*)input {
    const WorldLock lock(world().mutex);
    return input && ![self own]->input && world().trouble != Trouble::NotAdmitted;
}
- (void)addInput:(AVCaptureInput*)input {
    [self own]->input = (AVCaptureDeviceInput*)[input retain];
}
- (void)removeInput:(AVCaptureInput*)input {
    if ([self own]->input == input) {
        [input release];
        [self own]->input = nil;
    }
}
- (BOOL)canAddOutput:(AVCaptureOutput*)output {
    return output && ![self own]->output;
}
- (void)addOutput:(AVCaptureOutput*)output {
    AVCaptureVideoDataOutput* const added = (AVCaptureVideoDataOutput*)[output retain];
    [self own]->output = added;
    if (![added target]->settingsAreRight)
        noteMisuse("wants other frames than B, G, R, A of the format's size");
}
- (void)removeOutput:(AVCaptureOutput*)output {
    if ([self own]->output == output) {
        [output release];
        [self own]->output = nil;
    }
}
- (void)beginConfiguration {
}
- (void)commitConfiguration {
}

- (void)startRunning {
    Session* const own = [self own];
    AVCaptureDevice* const device = [own->input device];
    Trouble trouble;
    int milliseconds;
    {
        const WorldLock lock(world().mutex);
        trouble = world().trouble;
        milliseconds = stateOf(device).script.startMilliseconds;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    if (trouble == Trouble::StartRaises)
        ostrelRaise(@"startRunning has raised an exception");
    if (trouble == Trouble::StartFails) {
        [self fail:"the camera gave no picture"];
        return;
    }
    {
        const WorldLock lock(world().mutex);
        if (!stateOf(device).present)
            return;
        if (stateOf(device).session)
            noteMisuse("a camera in two sessions");
        stateOf(device).session = self;
        if (stateOf(device).locks == 0) // chooses for itself
            stateOf(device).active = [stateOf(device).formats objectAtIndex:0];
    }
    own->stopping = false;
    own->running = true;
    own->thread = std::thread([own] { generate(own); });
}

// Returns when no further frame is enqueued. What is enqueued already is still to come, and so is one more.
- (void)stopRunning {
    Session* const own = [self own];
    if (!own->running)
        return;
    {
        const std::lock_guard<std::mutex> lock(own->mutex);
        own->stopping = true;
        own->changed.notify_all();
    }
    own->thread.join();
    own->running = false;
    AVCaptureDevice* const device = [own->input device];
    sendFrame(device, own->output, 1);
    const WorldLock lock(world().mutex);
    if (stateOf(device).session == self)
        stateOf(device).session = nullptr;
}
- (BOOL)isRunning {
    return [self own]->running ? YES : NO;
}
- (void)fail:(const char*)why {
    NSDictionary* const words = [NSDictionary dictionaryWithObject:text(why)
                                                            forKey:NSLocalizedDescriptionKey];
    NSError* const error = [NSError errorWithDomain:@"AVFoundationErrorDomain" code:-11800 userInfo:words];
    post(AVCaptureSessionRuntimeErrorNotification, self,
         [NSDictionary dictionaryWithObject:error forKey:AVCaptureSessionErrorKey]);
}
@end

namespace {

// Retained and autoreleased: it may end meanwhile.
AVCaptureSession* sessionOf(const std::string& identifier) {
    const WorldLock lock(world().mutex);
    AVCaptureDevice* const device = deviceWith(identifier);
    if (!device || !stateOf(device).session)
        return nil;
    return [[static_cast<AVCaptureSession*>(const_cast<void*>(stateOf(device).session)) retain] autorelease];
}

} // namespace

namespace ostrel::support::avfoundation {

void failSession(const std::string& identifier, const std::string& why) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    [sessionOf(identifier) fail:why.c_str()];
    [pool drain];
}

void interruptSession(const std::string& identifier, bool interrupted) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    if (AVCaptureSession* const session = sessionOf(identifier))
        post(interrupted ? AVCaptureSessionWasInterruptedNotification
                         : AVCaptureSessionInterruptionEndedNotification,
             session, nil);
    [pool drain];
}

} // namespace ostrel::support::avfoundation
