#include "support/recorded_framework.h"
#include "platform/QTKit/frame_slot.h"

#import <ostrel/capture_session.h>

#include "support/leaks.h"

#import <objc/objc-sync.h>
#import <objc/runtime.h>

#include <iostream>
#include <map>
#include <mutex>
#include <streambuf>

struct __CVBuffer {
    std::string name;
    void* base;
    size_t bytesPerRow, height;
    int owners;
};

namespace ostrel::recorded {

namespace {

// Everything here is guarded by one lock that a thread may take again.
struct Recorder {
    std::recursive_mutex mutex;
    Machine machine;
    Transcript transcript;
    std::map<const void*, std::string> names;
    std::map<std::string, int> made;
    NSMutableArray* cameras = nil;
    id watched = nil;
    const uint8_t* destination = nullptr;
    std::map<std::string, std::string> seen;
    int flushes = 0, poolEnds = 0;
};

Recorder& recorder() {
    static Recorder* const instance = new Recorder; // outlives the static objects
    return *instance;
}

using Lock = std::lock_guard<std::recursive_mutex>;

std::string nameOf(const void* object) {
    if (!object)
        return "nil";
    const auto found = recorder().names.find(object);
    return found == recorder().names.end() ? "something" : found->second;
}

void nameMade(id object, const char* kind) {
    const Lock lock(recorder().mutex);
    recorder().names[object] = kind + std::to_string(++recorder().made[kind]);
}

template <typename Value>
Value& variable(id object, const char* name) {
    const Ivar ivar = class_getInstanceVariable([object class], name);
    return *reinterpret_cast<Value*>(reinterpret_cast<char*>(object) + ivar_getOffset(ivar));
}

std::map<std::string, std::string> watchedValues() {
    std::map<std::string, std::string> values;
    const id object = recorder().watched;
    if (object) {
        values["counter"] = std::to_string(variable<uint32_t>(object, "m_capturedFrameCounter"));
        values["pool"] = variable<id>(object, "pool") ? "there" : "nil";
        for (const char* name : {"cam", "session", "input", "output"})
            values[name] = nameOf(variable<id>(object, name));
        CVBufferRef frame = variable<CVBufferRef>(object, "m_lastCapturedFrame");
        values["frame"] = frame ? frame->name : "null";
    }
    if (recorder().destination)
        values["destination"] = std::to_string(*recorder().destination);
    return values;
}

void noteChanges() {
    const std::map<std::string, std::string> now = watchedValues();
    for (const auto& each : now)
        if (recorder().seen.count(each.first) && recorder().seen[each.first] != each.second)
            recorder().transcript.push_back(each.first + " = " + each.second);
    recorder().seen = now;
}

// The standard error stream. Each piece that is written is a line.
class LineRecorder : public std::streambuf {
protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        note("| " + std::string(text, static_cast<std::size_t>(length > 0 ? length - 1 : 0)));
        return length;
    }
    int overflow(int c) override {
        note("| a single byte");
        return c;
    }
    int sync() override {
        const Lock lock(recorder().mutex);
        ++recorder().flushes;
        return 0;
    }
};

IMP deallocOfPools;
id deallocPool(id pool, SEL selector, ...) {
    {
        const Lock lock(recorder().mutex);
        if (recorder().watched && variable<id>(recorder().watched, "pool") == pool)
            ++recorder().poolEnds;
    }
    return deallocOfPools(pool, selector);
}

id allocSessionObject(id cls, SEL selector, ...) {
    note("session object alloc");
    return class_getMethodImplementation(object_getClass((id)[NSObject class]), selector)(cls, selector);
}

void takeOverOnce() {
    static const bool done = [] {
        std::cerr.rdbuf(new LineRecorder);
        std::cerr << std::nounitbuf; // only what is flushed on purpose counts
        deallocOfPools = method_setImplementation(
            class_getInstanceMethod([NSAutoreleasePool class], @selector(dealloc)), deallocPool);
        class_addMethod(object_getClass((id)[VideoCaptureThreadObj class]), @selector(alloc),
                        allocSessionObject, "@@:");
        return true;
    }();
    (void)done;
}

} // namespace

void begin(const Machine& machine) {
    const support::KeptByDesign cameras; // whoever met one may still refer to it
    const Lock lock(recorder().mutex);
    takeOverOnce();
    recorder().machine = machine;
    recorder().transcript.clear();
    recorder().made.clear();
    recorder().watched = nil;
    recorder().destination = nullptr;
    recorder().seen.clear();
    recorder().flushes = recorder().poolEnds = 0;
    recorder().cameras = [[NSMutableArray alloc] init];
    for (std::size_t i = 0; i < machine.identifiers.size(); ++i) {
        QTCaptureDevice* const camera = [[QTCaptureDevice alloc] init];
        [recorder().cameras addObject:camera];
        recorder().names[camera] = "camera" + std::to_string(i);
    }
}

void note(const std::string& entry) {
    const Lock lock(recorder().mutex);
    noteChanges();
    recorder().transcript.push_back(entry);
}

Transcript take() {
    const Lock lock(recorder().mutex);
    noteChanges();
    Transcript taken;
    taken.swap(recorder().transcript);
    return taken;
}

void watch(void* sessionObject) {
    const Lock lock(recorder().mutex);
    recorder().watched = static_cast<id>(sessionObject);
    recorder().seen = watchedValues();
}

void watchDestination(const uint8_t* byte) {
    const Lock lock(recorder().mutex);
    recorder().destination = byte;
    recorder().seen = watchedValues();
}

int flushes() {
    const Lock lock(recorder().mutex);
    return recorder().flushes;
}

int watchedPoolEnds() {
    const Lock lock(recorder().mutex);
    return recorder().poolEnds;
}

CVBufferRef makeFrame(const char* name, void* base, size_t bytesPerRow, size_t height) {
    return new __CVBuffer{name, base, bytesPerRow, height, 1};
}

} // namespace ostrel::recorded

using namespace ostrel::recorded;

// The lock of a synchronised block, in the place of the runtime's own.
extern "C" int objc_sync_enter(id object) {
    recorder().mutex.lock();
    if ([object isKindOfClass:[VideoCaptureThreadObj class]])
        note("lock");
    return OBJC_SYNC_SUCCESS;
}

extern "C" int objc_sync_exit(id object) {
    if ([object isKindOfClass:[VideoCaptureThreadObj class]])
        note("unlock");
    recorder().mutex.unlock();
    return OBJC_SYNC_SUCCESS;
}

extern "C" {

NSString* const QTMediaTypeVideo = @"video";
const CFStringRef kCVPixelBufferPixelFormatTypeKey = (CFStringRef) @"Format";
const CFStringRef kCVPixelBufferWidthKey = (CFStringRef) @"Width";
const CFStringRef kCVPixelBufferHeightKey = (CFStringRef) @"Height";

CVBufferRef CVBufferRetain(CVBufferRef buffer) {
    note("retain " + (buffer ? buffer->name : "null"));
    if (buffer)
        ++buffer->owners;
    return buffer;
}

void CVBufferRelease(CVBufferRef buffer) {
    note("release " + (buffer ? buffer->name : "null"));
    if (buffer && --buffer->owners == 0) {
        note("end of " + buffer->name);
        delete buffer;
    }
}

CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, CVOptionFlags flags) {
    note("lock base of " + buffer->name + " with " + std::to_string(flags));
    return kCVReturnSuccess;
}

CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, CVOptionFlags flags) {
    note("unlock base of " + buffer->name + " with " + std::to_string(flags));
    return kCVReturnSuccess;
}

void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
    return buffer->base;
}

size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
    return buffer->bytesPerRow;
}

size_t CVPixelBufferGetHeight(CVPixelBufferRef buffer) {
    return buffer->height;
}

} // extern "C"

@implementation QTCaptureDevice

+ (NSArray*)inputDevicesWithMediaType:(NSString*)mediaType {
    note([mediaType isEqual:QTMediaTypeVideo] ? "video devices" : "other devices");
    return recorder().cameras;
}

- (NSString*)uniqueID {
    note(nameOf(self) + " uniqueID");
    NSUInteger index = 0;
    while ([recorder().cameras objectAtIndex:index] != self)
        ++index;
    const char* const text = recorder().machine.identifiers[index];
    return text ? [NSString stringWithUTF8String:text] : nil;
}

- (NSString*)localizedDisplayName {
    note(nameOf(self) + " localizedDisplayName");
    return recorder().machine.named ? [NSString stringWithUTF8String:nameOf(self).c_str()] : nil;
}

- (BOOL)open:(NSError**)errorPtr {
    note(nameOf(self) + " open:" + (errorPtr ? "" : " without an error"));
    return recorder().machine.opens;
}

- (void)close {
    note(nameOf(self) + " close");
}

@end

@implementation QTCaptureInput
@end

@implementation QTCaptureDeviceInput

- (id)initWithDevice:(QTCaptureDevice*)aDevice {
    self = [super init];
    device = aDevice;
    nameMade(self, "input");
    note(nameOf(self) + " initWithDevice: " + nameOf(aDevice));
    return self;
}

- (QTCaptureDevice*)device {
    return device;
}

- (void)dealloc {
    note(nameOf(self) + " dealloc");
    [super dealloc];
}

@end

@implementation QTCaptureOutput
@end

@implementation QTCaptureDecompressedVideoOutput

- (id)init {
    self = [super init];
    nameMade(self, "output");
    note(nameOf(self) + " init");
    return self;
}

- (void)setPixelBufferAttributes:(NSDictionary*)attributes {
    std::string entry = nameOf(self) + " setPixelBufferAttributes:";
    for (CFStringRef key :
         {kCVPixelBufferWidthKey, kCVPixelBufferHeightKey, kCVPixelBufferPixelFormatTypeKey}) {
        entry += std::string(" ") + [(NSString*)(id)key UTF8String] + " " +
                 std::to_string([[attributes objectForKey:(id)key] unsignedIntValue]);
    }
    note(entry + ", " + std::to_string([attributes count]) + " in all");
}

- (NSDictionary*)pixelBufferAttributes {
    return nil;
}

- (void)setAutomaticallyDropsLateVideoFrames:(BOOL)drops {
    note(nameOf(self) + " setAutomaticallyDropsLateVideoFrames: " + std::to_string(drops));
}

- (void)setMinimumVideoFrameInterval:(NSTimeInterval)interval {
    note(nameOf(self) + " setMinimumVideoFrameInterval: " + std::to_string(interval));
}

- (void)setDelegate:(id)delegate {
    note(nameOf(self) + " setDelegate: " + (delegate == recorder().watched ? "self" : "another"));
}

- (id)delegate {
    return nil;
}

- (void)dealloc {
    note(nameOf(self) + " dealloc");
    [super dealloc];
}

@end

@implementation QTCaptureSession

- (id)init {
    self = [super init];
    nameMade(self, "session");
    note(nameOf(self) + " init");
    return self;
}

- (BOOL)addInput:(QTCaptureInput*)input error:(NSError**)errorPtr {
    note(nameOf(self) + " addInput: " + nameOf(input) + (errorPtr ? "" : " without an error"));
    return recorder().machine.takesInput;
}

- (BOOL)addOutput:(QTCaptureOutput*)output error:(NSError**)errorPtr {
    note(nameOf(self) + " addOutput: " + nameOf(output) + (errorPtr ? "" : " without an error"));
    return recorder().machine.takesOutput;
}

// Whether it runs is kept in the variable that holds the state of the real one.
- (void)startRunning {
    note(nameOf(self) + " startRunning");
    state = reinterpret_cast<QTCaptureSessionState*>(self);
}

- (void)stopRunning {
    note(nameOf(self) + " stopRunning");
    state = nullptr;
}

- (BOOL)isRunning {
    note(nameOf(self) + " isRunning");
    return state != nullptr;
}

- (void)dealloc {
    note(nameOf(self) + " dealloc");
    [super dealloc];
}

@end

// Deliveries are the real framework's; this one has none that a stop could have to reach.
namespace ostrel {

void FrameSlot::expect(const void*) {}
void FrameSlot::startIsOver(const void*) {}
void FrameSlot::refuse(const void*, const std::string&) {}
void FrameSlot::close(const void*) {}
void FrameSlot::shut(const void*) {}
void FrameSlot::forget(const void*) {}

} // namespace ostrel
