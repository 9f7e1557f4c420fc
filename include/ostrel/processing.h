// Frame sizes, the millisecond clock, conversion between pixel layouts and scaling between frame sizes.
// Everything is a static function without state; any thread may call, on buffers that do not overlap.
#ifndef OSTREL_PROCESSING_H
#define OSTREL_PROCESSING_H

#include <ostrel/export.h>

#include <QtCore/QString>

#include <stdint.h>
#include <vector>

namespace ostrel {

// The three frame sizes. Any int is a valid value: operations answer for numbers that are no level, too.
enum VIDEO_QUALITY : int {
    VIDEO_QUALITY_LD = 0, // 320 x 240
    VIDEO_QUALITY_SD = 1, // 640 x 480
    VIDEO_QUALITY_HD = 2  // 1280 x 720
};

class OSTREL_EXPORT OVideoCommon {
public:
    // The level of exactly this size, else -1.
    static int resolutionToQuality(int width, int height);
    // The size of a level in pixels; 0 x 0 for any other number.
    static void qualityToResolution(int quality, int& width, int& height);
    // "320 x 240" and so on; a null string for any other number.
    static QString qualityToString(int quality);
    // Wall-clock milliseconds since 1970 modulo 2^32: only differences mean anything.
    static uint32_t get_time();
};

// Filters for scaling. Other numbers go to libyuv as they are, at the caller's risk: with some of them its
// releases read beyond the source when they enlarge.
enum ScaleMethod : int {
    SCALE_METHOD_NONE = 0,     // point sampling
    SCALE_METHOD_BILINEAR = 1, // bilinear
    SCALE_METHOD_BOX = 2       // area average when reducing
};

// Conversions of whole frames. Rows have no padding; the top row comes first unless it is said otherwise.
//   ARGB, ARGB32  bytes B, G, R, A            width * 4 * height bytes
//   RGB24         bytes B, G, R               width * 3 * height bytes
//   YUY2          bytes Y0, U, Y1, V          width * 2 * height bytes
//   I420          planes Y, U, V              width * height * 3 / 2 bytes
// Width and height are pixels, positive and even. Colours are BT.601 with limited range. Raw pointers are the
// caller's: they must hold a frame of the given size, and nothing is kept after the call. Answers: 0, or -1
// with no byte written when the arguments are refused (a null pointer, a width below 1, a height of 0).
class OSTREL_EXPORT OVideoConverter {
public:
    OVideoConverter() {}

    // src is bottom row first.
    static int RGB24ToI420(const uint8_t* src, uint8_t* dst, int width, int height);
    static int ARGBToI420(const uint8_t* src, uint8_t* dst, int width, int height);   // ignores A
    static int I420ToARGB32(const uint8_t* src, uint8_t* dst, int width, int height); // writes A = 255
    static int YUY2ToARGB(const uint8_t* src, uint8_t* dst, int width, int height);   // writes A = 255
    // dstStride: bytes from row to row of dst, any but the width * 2 of each row left alone; 0 and width both
    // mean rows without padding.
    static int I420ToYUY2(const uint8_t* src, uint8_t* dst, int width, int height, int dstStride);
    static int YUY2ToI420(int width, int height, const uint8_t* src, uint8_t* dst); // the size comes first

    // src is bottom row first; writes A = 255. Neither length is checked and dst is not resized: it must
    // already hold width * 4 * height bytes. Answers 0 even when the arguments are refused.
    static int RGB24ToARGB32(const std::vector<uint8_t>& src, std::vector<uint8_t>& dst, int width,
                             int height);
    // src is top row first and must have exactly width * 3 * height bytes, else -1 and dst is untouched. dst
    // is resized to its frame before anything else is looked at: two negative sides, whose product is a
    // length as well, are refused after that. Throws std::bad_alloc.
    static int RGB24ToYUY2(const std::vector<uint8_t>& src, std::vector<uint8_t>& dst, int width, int height);
    // src is I420 (dst is not resized and must already hold width * 2 * height bytes) or RGB24 (as
    // RGB24ToYUY2), told apart by its length; any other length answers -1 and dst is untouched.
    static int convertToYUY2(const std::vector<uint8_t>& src, std::vector<uint8_t>& dst, int width,
                             int height);
    // Returns an empty buffer for any input.
    static std::vector<uint8_t> ScaleLDToSD(const std::vector<uint8_t>& src);
};

// Scaling between the three frame sizes. dst is resized to the frame of its level; keep it between calls, as
// fresh memory for each frame costs more than the scaling. src is not changed and must be another buffer than
// dst. Answers -1, with dst untouched, when src does not have the exact length of a frame of its level; a
// number that is no level stands for an empty frame. Throws std::bad_alloc.
class OSTREL_EXPORT OVideoScaler {
public:
    // Answers 0, or -1 for numbers that are no level (dst is resized all the same).
    static int scaleI420Frame(VIDEO_QUALITY srcQuality, std::vector<uint8_t>& src, VIDEO_QUALITY dstQuality,
                              std::vector<uint8_t>& dst, ScaleMethod method);
    // By way of I420. Answers 0 whenever src has the right length.
    static int scaleYUY2Frame(VIDEO_QUALITY srcQuality, std::vector<uint8_t>& src, VIDEO_QUALITY dstQuality,
                              std::vector<uint8_t>& dst, ScaleMethod method);
};

} // namespace ostrel

#endif
