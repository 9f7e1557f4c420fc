// A camera of the machine.
#ifndef OSTREL_QTKIT_QTCAPTUREDEVICE_H
#define OSTREL_QTKIT_QTCAPTUREDEVICE_H

#include <ostrel/export.h>

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

OSTREL_EXPORT extern NSString* const QTMediaTypeVideo;

#ifdef __cplusplus
}
#endif

struct QTCaptureDeviceState;

// Thread-safe. Objects live as long as the process, one for each identifier: they may be kept without being
// retained, and a camera that is plugged in again is the same object.
OSTREL_EXPORT
@interface QTCaptureDevice : NSObject {
@private
    struct QTCaptureDeviceState* state;
}

// The attached devices, asked of the system afresh; empty for any other media type than QTMediaTypeVideo.
+ (NSArray*)inputDevicesWithMediaType:(NSString*)mediaType;

// Stable over re-plugging and reboots.
- (NSString*)uniqueID;
- (NSString*)localizedDisplayName;

// Opens may be repeated; the camera is closed by as many closes, but not while a session runs on it.
// On failure NO, with an error that the caller does not own; errorPtr may be NULL.
- (BOOL)open:(NSError**)errorPtr;
- (void)close;

@end

#endif
