#include "devices/platform_listing.h"

#include "base/autorelease_scope.h"
#include "base/fast_enumeration.h"
#include "base/text.h"

#import <Foundation/Foundation.h>
#import <QTKit/QTKit.h>

#include <mutex>

namespace ostrel {

namespace {

// Foundation sets its classes up when they are first used, and not everywhere safely so when two threads do
// that at once, as they may when they list cameras as their first calls.
void useFoundationOnce() {
    const AutoreleaseScope pool;
    [NSMutableArray array];
}

} // namespace

std::vector<std::pair<std::string, std::string>> platformCameras() {
    std::vector<std::pair<std::string, std::string>> cameras;
    static std::once_flag used;
    std::call_once(used, useFoundationOnce);
    const AutoreleaseScope pool;
    forEachObject([QTCaptureDevice inputDevicesWithMediaType:QTMediaTypeVideo], [&cameras](id device) {
        const std::string identifier = requiredText([[device uniqueID] UTF8String]);
        const std::string name = requiredText([[device localizedDisplayName] UTF8String]);
        cameras.push_back(std::make_pair(identifier, name));
        return true;
    });
    return cameras;
}

} // namespace ostrel
