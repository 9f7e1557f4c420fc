#include "platform/cameras/pixels/jpeg_check.h"

namespace ostrel {
namespace cameras {
namespace pixels {

namespace {

const char* const kTruncated = "truncated";
const char* const kNotJpeg = "not a JPEG picture";
const char* const kUnsupported = "unsupported JPEG";

enum Marker : uint8_t {
    Baseline = 0xC0,
    Extended = 0xC1,
    HuffmanTables = 0xC4,
    ArithmeticTables = 0xCC,
    StartOfPicture = 0xD8,
    EndOfPicture = 0xD9,
    StartOfScan = 0xDA
};

int number(const uint8_t* p) {
    return p[0] << 8 | p[1];
}

// Whether FF D9 stands somewhere from `from` on, searched from the end, where it is in a whole picture.
bool endsProperly(const uint8_t* data, size_t from, size_t bytes) {
    for (size_t i = bytes; i >= from + 2; --i)
        if (data[i - 1] == EndOfPicture && data[i - 2] == 0xFF)
            return true;
    return false;
}

} // namespace

const char* faultOfJpeg(const uint8_t* data, size_t bytes, int width, int height) {
    if (bytes == 0)
        return "empty";
    if (bytes < 4 || data[0] != 0xFF || data[1] != StartOfPicture)
        return kNotJpeg;
    int components = 0;
    size_t at = 2;
    while (at + 4 <= bytes) {
        if (data[at] != 0xFF)
            return kNotJpeg;
        const uint8_t marker = data[at + 1];
        if (marker == 0xFF) { // fill byte
            ++at;
            continue;
        }
        const auto length = static_cast<size_t>(number(data + at + 2));
        if (length < 2)
            return kNotJpeg;
        const uint8_t* body = data + at + 4;
        if (length > bytes - at - 2)
            return kTruncated;
        if (marker == Baseline || marker == Extended) {
            if (length < 8)
                return kNotJpeg;
            if (number(body + 1) != height || number(body + 3) != width)
                return "wrong size";
            components = body[5];
        } else if (marker >= 0xC0 && marker <= 0xCF && marker != HuffmanTables &&
                   marker != ArithmeticTables) {
            return kUnsupported; // progressive, lossless or arithmetic: no camera makes these
        } else if (marker == StartOfScan) {
            if (components == 0 || length < 3)
                return kNotJpeg;
            if (body[0] != components)
                return kUnsupported; // planes one after the other would have to be held as a whole
            return endsProperly(data, at + 2 + length, bytes) ? nullptr : kTruncated;
        }
        at += 2 + length;
    }
    return kTruncated;
}

} // namespace pixels
} // namespace cameras
} // namespace ostrel
