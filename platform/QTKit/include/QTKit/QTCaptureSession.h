// Brings inputs and outputs together.
#ifndef OSTREL_QTKIT_QTCAPTURESESSION_H
#define OSTREL_QTKIT_QTCAPTURESESSION_H

#include <ostrel/export.h>

#import <Foundation/Foundation.h>

@class QTCaptureInput;
@class QTCaptureOutput;

struct QTCaptureSessionState;

// Thread-safe. Inputs and outputs are retained.
OSTREL_EXPORT
@interface QTCaptureSession : NSObject {
@private
    struct QTCaptureSessionState* state;
}

- (id)init;

// NO, with an error that the caller does not own, when the input's device is not open or is refused, or when
// the camera cannot be started for the output. errorPtr may be NULL.
- (BOOL)addInput:(QTCaptureInput*)input error:(NSError**)errorPtr;
- (BOOL)addOutput:(QTCaptureOutput*)output error:(NSError**)errorPtr;

// Returns at once; frames arrive on a delivery thread.
- (void)startRunning;
// Returns when no call of a delegate is in progress and none will come, unless it is called from the delegate
// itself.
- (void)stopRunning;
- (BOOL)isRunning;

@end

#endif
