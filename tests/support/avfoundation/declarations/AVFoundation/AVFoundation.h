// AVFoundation by its published names: what the library uses of it, as the SDK of macOS 11 declares it.
#ifndef OSTREL_TESTS_AVFOUNDATION_AVFOUNDATION_H
#define OSTREL_TESTS_AVFOUNDATION_AVFOUNDATION_H

#import <CoreMedia/CoreMedia.h>
#import <dispatch/dispatch.h>
#import <Foundation/Foundation.h>
#import <Foundation/NSNotification.h>

#ifdef __cplusplus
extern "C" {
#endif

extern NSString* const AVMediaTypeVideo;
extern NSString* const AVCaptureDeviceTypeBuiltInWideAngleCamera;
extern NSString* const AVCaptureDeviceWasConnectedNotification;
extern NSString* const AVCaptureDeviceWasDisconnectedNotification;
extern NSString* const AVCaptureSessionRuntimeErrorNotification;
extern NSString* const AVCaptureSessionWasInterruptedNotification;
extern NSString* const AVCaptureSessionInterruptionEndedNotification;
extern NSString* const AVCaptureSessionErrorKey;

#ifdef __cplusplus
}
#endif

typedef NSInteger AVCaptureDevicePosition;
enum { AVCaptureDevicePositionUnspecified = 0 };

typedef NSInteger AVAuthorizationStatus;
enum {
    AVAuthorizationStatusNotDetermined = 0,
    AVAuthorizationStatusRestricted = 1,
    AVAuthorizationStatusDenied = 2,
    AVAuthorizationStatusAuthorized = 3
};

enum {
    AVErrorDeviceAlreadyUsedByAnotherSession = -11804,
    AVErrorDeviceWasDisconnected = -11808,
    AVErrorDeviceNotConnected = -11814,
    AVErrorDeviceInUseByAnotherApplication = -11815,
    AVErrorApplicationIsNotAuthorizedToUseDevice = -11852
};

@class AVCaptureConnection;

// What stands behind each is the affair of whoever implements it.
@interface AVFrameRateRange : NSObject {
@private
    void* state;
}
- (CMTime)minFrameDuration;
- (CMTime)maxFrameDuration;
@end

@interface AVCaptureDeviceFormat : NSObject {
@private
    void* state;
}
- (CMFormatDescriptionRef)formatDescription;
- (NSArray*)videoSupportedFrameRateRanges;
@end

@interface AVCaptureDevice : NSObject {
@private
    void* state;
}
+ (AVAuthorizationStatus)authorizationStatusForMediaType:(NSString*)mediaType;
- (NSString*)uniqueID;
- (NSString*)localizedName;
- (NSString*)modelID;
- (BOOL)isConnected;
- (NSArray*)formats;
- (AVCaptureDeviceFormat*)activeFormat;
- (void)setActiveFormat:(AVCaptureDeviceFormat*)format;
- (CMTime)activeVideoMinFrameDuration;
- (void)setActiveVideoMinFrameDuration:(CMTime)duration;
- (void)setActiveVideoMaxFrameDuration:(CMTime)duration;
- (BOOL)lockForConfiguration:(NSError**)outError;
- (void)unlockForConfiguration;
@end

@interface AVCaptureDeviceDiscoverySession : NSObject {
@private
    NSArray* devices;
}
+ (id)discoverySessionWithDeviceTypes:(NSArray*)deviceTypes
                            mediaType:(NSString*)mediaType
                             position:(AVCaptureDevicePosition)position;
- (NSArray*)devices;
@end

@interface AVCaptureInput : NSObject
@end

@interface AVCaptureDeviceInput : AVCaptureInput {
@private
    AVCaptureDevice* device;
}
- (id)initWithDevice:(AVCaptureDevice*)device error:(NSError**)outError;
- (AVCaptureDevice*)device;
@end

@interface AVCaptureOutput : NSObject
@end

@protocol AVCaptureVideoDataOutputSampleBufferDelegate <NSObject>
@optional
- (void)captureOutput:(AVCaptureOutput*)output
    didOutputSampleBuffer:(CMSampleBufferRef)sampleBuffer
           fromConnection:(AVCaptureConnection*)connection;
@end

@interface AVCaptureVideoDataOutput : AVCaptureOutput {
@private
    void* state;
}
- (void)setVideoSettings:(NSDictionary*)videoSettings;
- (void)setAlwaysDiscardsLateVideoFrames:(BOOL)discards;
- (void)setSampleBufferDelegate:(id<AVCaptureVideoDataOutputSampleBufferDelegate>)delegate
                          queue:(dispatch_queue_t)queue;
@end

@interface AVCaptureSession : NSObject {
@private
    void* state;
}
- (BOOL)canAddInput:(AVCaptureInput*)input;
- (void)addInput:(AVCaptureInput*)input;
- (void)removeInput:(AVCaptureInput*)input;
- (BOOL)canAddOutput:(AVCaptureOutput*)output;
- (void)addOutput:(AVCaptureOutput*)output;
- (void)removeOutput:(AVCaptureOutput*)output;
- (void)beginConfiguration;
- (void)commitConfiguration;
- (void)startRunning;
- (void)stopRunning;
- (BOOL)isRunning;
@end

#endif
