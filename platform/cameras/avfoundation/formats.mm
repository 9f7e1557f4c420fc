#include "platform/cameras/avfoundation/formats.h"

#include "base/fast_enumeration.h"
#include "platform/cameras/pixels/picture.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace ostrel {
namespace cameras {
namespace avfoundation {

namespace {

// Apple's codes have their first character in the highest byte.
constexpr uint32_t code(const char (&text)[5]) {
    return static_cast<uint32_t>(static_cast<unsigned char>(text[0])) << 24 |
           static_cast<uint32_t>(static_cast<unsigned char>(text[1])) << 16 |
           static_cast<uint32_t>(static_cast<unsigned char>(text[2])) << 8 |
           static_cast<uint32_t>(static_cast<unsigned char>(text[3]));
}

// What the system's own conversion to B, G, R, A is taken to cost, for ranking only.
int costOf(uint32_t subtype) {
    switch (subtype) {
    case code("BGRA"):
        return pixels::decodeCost(pixels::Layout::Bgrx);
    case code("2vuy"):
    case code("yuvs"):
        return pixels::decodeCost(pixels::Layout::Yuyv);
    case code("420v"):
    case code("420f"):
        return pixels::decodeCost(pixels::Layout::Nv12);
    default: // compressed, or rare
        return pixels::decodeCost(pixels::Layout::Jpeg);
    }
}

std::string textOf(uint32_t subtype) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const uint32_t character = subtype >> shift & 0xff;
        text += character >= ' ' && character <= '~' ? static_cast<char>(character) : '?';
    }
    return text;
}

Interval intervalOf(const CMTime& time) {
    Interval interval;
    if (time.value > 0 && time.value <= UINT32_MAX && time.timescale > 0) {
        interval.numerator = static_cast<uint32_t>(time.value);
        interval.denominator = static_cast<uint32_t>(time.timescale);
    }
    return interval;
}

double highestRate(AVCaptureDeviceFormat* format) {
    double highest = 0;
    forEachObject([format videoSupportedFrameRateRanges], [&](id range) {
        highest = std::max(highest, [static_cast<AVFrameRateRange*>(range) maxFrameRate]);
        return true;
    });
    return highest;
}

Size sizeOf(AVCaptureDeviceFormat* format) {
    const CMVideoDimensions size = CMVideoFormatDescriptionGetDimensions([format formatDescription]);
    return Size(size.width, size.height);
}

} // namespace

std::vector<Offer> offersFor(const Request& request, AVCaptureDevice* device) {
    std::vector<AVCaptureDeviceFormat*> formats;
    std::vector<Candidate> candidates;
    forEachObject([device formats], [&](id one) {
        AVCaptureDeviceFormat* const format = one;
        Candidate candidate;
        candidate.fourcc = static_cast<uint32_t>(formats.size()); // by which it is found again
        candidate.size = sizeOf(format);
        candidate.interval = cameras::intervalOf(highestRate(format));
        candidate.cost = costOf(CMFormatDescriptionGetMediaSubType([format formatDescription]));
        formats.push_back(format);
        if (pixels::sizeIsSane(candidate.size.width, candidate.size.height))
            candidates.push_back(candidate);
        return true;
    });
    std::vector<Offer> offers;
    for (const Candidate& candidate : ranked(std::move(candidates), request.size, request.leastRate))
        offers.push_back({candidate, formats[candidate.fourcc]});
    return offers;
}

Mode activeMode(AVCaptureDevice* device) {
    Mode mode;
    AVCaptureDeviceFormat* const format = [device activeFormat];
    if (!format)
        return mode;
    mode.format = textOf(CMFormatDescriptionGetMediaSubType([format formatDescription]));
    mode.size = sizeOf(format);
    mode.interval = intervalOf([device activeVideoMinFrameDuration]);
    return mode;
}

} // namespace avfoundation
} // namespace cameras
} // namespace ostrel
