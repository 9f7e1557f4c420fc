// Pixel buffers, the part of CoreVideo that capturing needs: names, signatures and behaviour as published.
// Everything here is thread-safe, with one exception: a buffer's pixels belong to whoever locked it.
#ifndef OSTREL_COREVIDEO_H
#define OSTREL_COREVIDEO_H

#include <ostrel/export.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// CoreFoundation's references, here Foundation's objects: a CFStringRef may be cast to an NSString*.
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef const struct __CFAllocator* CFAllocatorRef;
#ifndef kCFAllocatorDefault
#define kCFAllocatorDefault ((CFAllocatorRef)0)
#endif

typedef uint32_t OSType; // four characters, the first in the highest byte
typedef int32_t CVReturn;
typedef uint64_t CVOptionFlags;

typedef struct __CVBuffer* CVBufferRef;
typedef CVBufferRef CVImageBufferRef;
typedef CVImageBufferRef CVPixelBufferRef;

enum {
    kCVReturnSuccess = 0,
    kCVReturnError = -6660,
    kCVReturnInvalidArgument = -6661,
    kCVReturnAllocationFailed = -6662,
    kCVReturnInvalidPixelFormat = -6680,
    kCVReturnInvalidSize = -6681
};

enum {
    kCVPixelFormatType_32BGRA = 0x42475241 // 'BGRA': bytes B, G, R, A
};

// A lock flag: the pixels will be left as they are.
enum { kCVPixelBufferLock_ReadOnly = 1 };

// Keys of a dictionary of pixel buffer attributes; the values are NSNumbers.
OSTREL_EXPORT extern const CFStringRef kCVPixelBufferPixelFormatTypeKey;
OSTREL_EXPORT extern const CFStringRef kCVPixelBufferWidthKey;  // pixels
OSTREL_EXPORT extern const CFStringRef kCVPixelBufferHeightKey; // pixels

// Both take NULL and do nothing then; CVBufferRetain returns its argument.
OSTREL_EXPORT CVBufferRef CVBufferRetain(CVBufferRef buffer);
OSTREL_EXPORT void CVBufferRelease(CVBufferRef buffer);
#define CVPixelBufferRetain CVBufferRetain
#define CVPixelBufferRelease CVBufferRelease

// A buffer of width x height pixels of kCVPixelFormatType_32BGRA, the only format here, with contents that
// are not defined and rows of width * 4 bytes. The caller owns one reference. The allocator and the
// attributes are not looked at and may be NULL.
OSTREL_EXPORT CVReturn CVPixelBufferCreate(CFAllocatorRef allocator, size_t width, size_t height,
                                           OSType pixelFormatType, CFDictionaryRef pixelBufferAttributes,
                                           CVPixelBufferRef* pixelBufferOut);

typedef void (*CVPixelBufferReleaseBytesCallback)(void* releaseRefCon, const void* baseAddress);

// A buffer over the caller's memory, which stays the caller's: releaseCallback, unless NULL, is called when
// the last reference goes. bytesPerRow is at least width * 4.
OSTREL_EXPORT CVReturn CVPixelBufferCreateWithBytes(
    CFAllocatorRef allocator, size_t width, size_t height, OSType pixelFormatType, void* baseAddress,
    size_t bytesPerRow, CVPixelBufferReleaseBytesCallback releaseCallback, void* releaseRefCon,
    CFDictionaryRef pixelBufferAttributes, CVPixelBufferRef* pixelBufferOut);

// Locks nest. A captured frame is converted by its first lock. With NULL: kCVReturnInvalidArgument.
OSTREL_EXPORT CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef pixelBuffer, CVOptionFlags lockFlags);
OSTREL_EXPORT CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef pixelBuffer,
                                                      CVOptionFlags unlockFlags);

// The first byte of the top row; valid between lock and unlock. NULL when the picture could not be had.
OSTREL_EXPORT void* CVPixelBufferGetBaseAddress(CVPixelBufferRef pixelBuffer);
OSTREL_EXPORT size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef pixelBuffer);
OSTREL_EXPORT size_t CVPixelBufferGetWidth(CVPixelBufferRef pixelBuffer);  // pixels
OSTREL_EXPORT size_t CVPixelBufferGetHeight(CVPixelBufferRef pixelBuffer); // pixels
OSTREL_EXPORT OSType CVPixelBufferGetPixelFormatType(CVPixelBufferRef pixelBuffer);

#ifdef __cplusplus
}
#endif

#endif
