// What the classes of the stand-in share.
#ifndef OSTREL_TESTS_SUPPORT_AVFOUNDATION_STATE_H
#define OSTREL_TESTS_SUPPORT_AVFOUNDATION_STATE_H

#include "support/avfoundation/standin.h"

#import <AVFoundation/AVFoundation.h>

#include <atomic>
#include <memory>
#include <mutex>

extern "C" void ostrelRaise(NSString* reason); // an exception; does not return

namespace ostrel::support::avfoundation {

// A plugged device, until it is unplugged and for whoever still holds it.
struct DeviceState {
    Device script;
    NSArray* formats = nil;              // retained
    AVCaptureDeviceFormat* active = nil; // one of them
    CMTime shortest = {}, longest = {};  // between frames, where the format's own are not kept
    int locks = 0;
    bool connected = true;         // as the program sees it
    bool present = true;           // as it is
    const void* session = nullptr; // that runs
};

struct World {
    std::recursive_mutex mutex;
    std::vector<AVCaptureDevice*> listed, plugged; // retained; the list may be behind
    bool frozen = false, turning = false;
    int turns = 0;
    Trouble trouble = Trouble::None;
    int authorization = AVAuthorizationStatusAuthorized;
    std::vector<std::string> misuse;
    std::atomic<int> sessions{0}, inputs{0}, outputs{0}, lateCalls{0}, queues{0};
};
World& world();

using WorldLock = std::lock_guard<std::recursive_mutex>;

DeviceState& stateOf(AVCaptureDevice* device);
const Format& scriptOf(AVCaptureDeviceFormat* format);
void noteMisuse(const std::string& what);
int observations(); // of notifications, by observers that have not been taken back
// The program sees what has come and gone.
void updateList();
AVCaptureDevice* deviceWith(const std::string& identifier); // plugged; nil when there is none
void post(NSString* name, id object, NSDictionary* userInfo);
inline NSString* text(const std::string& utf8) {
    return [[[NSString alloc] initWithUTF8String:utf8.c_str()] autorelease];
}

} // namespace ostrel::support::avfoundation

#endif
