// CoreMedia by its published names: what the library uses of it.
#ifndef OSTREL_TESTS_AVFOUNDATION_COREMEDIA_H
#define OSTREL_TESTS_AVFOUNDATION_COREMEDIA_H

#include <CoreVideo/CoreVideo.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct opaqueCMSampleBuffer* CMSampleBufferRef;
typedef const struct opaqueCMFormatDescription* CMFormatDescriptionRef;
typedef CMFormatDescriptionRef CMVideoFormatDescriptionRef;
typedef uint32_t FourCharCode;

typedef struct {
    int32_t width;
    int32_t height;
} CMVideoDimensions;

#pragma pack(push, 4) // as published
typedef struct {
    int64_t value;
    int32_t timescale;
    uint32_t flags;
    int64_t epoch;
} CMTime;
#pragma pack(pop)

extern const CMTime kCMTimeInvalid;

CMTime CMTimeMake(int64_t value, int32_t timescale);
CVImageBufferRef CMSampleBufferGetImageBuffer(CMSampleBufferRef sample);
CMVideoDimensions CMVideoFormatDescriptionGetDimensions(CMVideoFormatDescriptionRef description);
FourCharCode CMFormatDescriptionGetMediaSubType(CMFormatDescriptionRef description);

#ifdef __cplusplus
}
#endif

#endif
