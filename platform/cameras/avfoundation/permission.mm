#include "platform/cameras/avfoundation/permission.h"

#include "base/autorelease_scope.h"

#import <AVFoundation/AVFoundation.h>

namespace ostrel {
namespace cameras {
namespace avfoundation {

Permission cameraPermission() {
    const AutoreleaseScope pool;
    switch ([AVCaptureDevice authorizationStatusForMediaType:AVMediaTypeVideo]) {
    case AVAuthorizationStatusNotDetermined:
        return Permission::Unanswered;
    case AVAuthorizationStatusDenied:
        return Permission::Denied;
    case AVAuthorizationStatusRestricted:
        return Permission::Restricted;
    case AVAuthorizationStatusAuthorized:
        break;
    }
    return Permission::Granted;
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
