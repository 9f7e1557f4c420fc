#include "support/avfoundation/state.h"

#include "support/avfoundation/queues.h"
#import <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <unistd.h>

@interface AVCaptureDevice (StandIn)
- (id)initWithScript:(const ostrel::support::avfoundation::Device&)script;
@end

const CFStringRef kCFRunLoopDefaultMode = (CFStringRef) @"kCFRunLoopDefaultMode";

namespace ostrel::support::avfoundation {

World& world() {
    static World* const one = new World;
    return *one;
}

void noteMisuse(const std::string& what) {
    const WorldLock lock(world().mutex);
    world().misuse.push_back(what);
}

AVCaptureDevice* deviceWith(const std::string& identifier) {
    for (AVCaptureDevice* device : world().plugged)
        if (stateOf(device).script.identifier == identifier)
            return device;
    return nil;
}

void post(NSString* name, id object, NSDictionary* userInfo) {
    [[NSNotificationCenter defaultCenter] postNotificationName:name object:object userInfo:userInfo];
}

void updateList() {
    std::vector<AVCaptureDevice*> come, gone;
    {
        const WorldLock lock(world().mutex);
        World& all = world();
        for (AVCaptureDevice* device : all.listed)
            if (std::find(all.plugged.begin(), all.plugged.end(), device) == all.plugged.end())
                gone.push_back(device); // with the list's reference
        for (AVCaptureDevice* device : all.plugged)
            if (std::find(all.listed.begin(), all.listed.end(), device) == all.listed.end())
                come.push_back([device retain]);
        for (AVCaptureDevice* device : gone)
            stateOf(device).connected = false;
        all.listed = all.plugged;
    }
    for (AVCaptureDevice* device : gone) {
        post(AVCaptureDeviceWasDisconnectedNotification, device, nil);
        [device release];
    }
    for (AVCaptureDevice* device : come)
        post(AVCaptureDeviceWasConnectedNotification, device, nil);
}

void reset() {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    World& all = world();
    {
        const WorldLock lock(all.mutex);
        for (AVCaptureDevice* device : all.plugged) {
            stateOf(device).present = false;
            [device release];
        }
        all.plugged.clear();
        all.frozen = all.turning = false;
        all.turns = 0;
        all.trouble = Trouble::None;
        all.authorization = AVAuthorizationStatusAuthorized;
        all.misuse.clear();
        all.lateCalls = 0;
    }
    updateList();
    [pool drain];
}

void plug(const Device& script) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    bool frozen = false;
    {
        const WorldLock lock(world().mutex);
        world().plugged.push_back([[AVCaptureDevice alloc] initWithScript:script]);
        frozen = world().frozen;
    }
    if (!frozen)
        updateList();
    [pool drain];
}

void unplug(const std::string& identifier) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    bool frozen = false;
    {
        const WorldLock lock(world().mutex);
        if (AVCaptureDevice* const device = deviceWith(identifier)) {
            stateOf(device).present = false;
            auto& plugged = world().plugged;
            plugged.erase(std::find(plugged.begin(), plugged.end(), device));
            [device release]; // the list has one more
        }
        frozen = world().frozen;
    }
    if (!frozen)
        updateList();
    [pool drain];
}

void setTrouble(Trouble trouble) {
    const WorldLock lock(world().mutex);
    world().trouble = trouble;
}

void setAuthorization(int status) {
    const WorldLock lock(world().mutex);
    world().authorization = status;
}

void freezeList() {
    const WorldLock lock(world().mutex);
    world().frozen = true;
}

void setLoopTurning(bool turning) {
    const WorldLock lock(world().mutex);
    world().turning = turning;
}

int loopTurns() {
    const WorldLock lock(world().mutex);
    return world().turns;
}

bool isStreaming(const std::string& identifier) {
    const WorldLock lock(world().mutex);
    AVCaptureDevice* const device = deviceWith(identifier);
    return device && stateOf(device).session;
}

int activeWidth(const std::string& identifier) {
    const WorldLock lock(world().mutex);
    AVCaptureDevice* const device = deviceWith(identifier);
    return device ? scriptOf(stateOf(device).active).width : 0;
}

int lateCalls() {
    return world().lateCalls;
}

std::string leftBehind() {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (liveQueues() > 0 && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const WorldLock lock(world().mutex);
    std::string all;
    for (const std::string& one : world().misuse)
        all += one + "; ";
    const auto count = [&](int number, const char* what) {
        if (number)
            all += std::to_string(number) + what;
    };
    for (AVCaptureDevice* device : world().plugged)
        count(stateOf(device).locks, " locks ");
    count(world().sessions, " sessions ");
    count(world().inputs, " inputs ");
    count(world().outputs, " outputs ");
    count(liveQueues(), " queues ");
    count(observations(), " observations ");
    return all;
}

std::vector<std::string> misuse() {
    const WorldLock lock(world().mutex);
    return world().misuse;
}

} // namespace ostrel::support::avfoundation

using namespace ostrel::support::avfoundation;

namespace {

char g_mainLoop, g_otherLoop;

bool isMainThread() {
    return ::getpid() == ::gettid();
}

} // namespace

CFRunLoopRef CFRunLoopGetMain(void) {
    return reinterpret_cast<CFRunLoopRef>(&g_mainLoop);
}

CFRunLoopRef CFRunLoopGetCurrent(void) {
    return reinterpret_cast<CFRunLoopRef>(isMainThread() ? &g_mainLoop : &g_otherLoop);
}

CFStringRef CFRunLoopCopyCurrentMode(CFRunLoopRef) {
    const WorldLock lock(world().mutex);
    return world().turning ? (CFStringRef)[(NSString*)kCFRunLoopDefaultMode retain] : nullptr;
}

CFRunLoopRunResult CFRunLoopRunInMode(CFStringRef, CFTimeInterval seconds, Boolean) {
    {
        const WorldLock lock(world().mutex);
        ++world().turns;
        if (seconds != 0)
            noteMisuse("waited for the run loop");
    }
    updateList();
    return 4; // handled a source
}

void CFRelease(CFTypeRef object) {
    [(id)object release];
}
