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

// As in the other kinds of camera, without blanks at the end.
std::string textOf(uint32_t subtype) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const uint32_t character = subtype >> shift & 0xff;
        text += character >= ' ' && character <= '~' ? static_cast<char>(character) : '?';
    }
    text.erase(text.find_last_not_of(' ') + 1);
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

// To the digit: the device takes no duration that is outside its ranges by the least bit, and rates are
// rounded.
std::vector<IntervalRange> rangesOf(AVCaptureDeviceFormat* format) {
    std::vector<IntervalRange> ranges;
    forEachObject([format videoSupportedFrameRateRanges], [&](id one) {
        AVFrameRateRange* const range = one;
        ranges.push_back({intervalOf([range minFrameDuration]), intervalOf([range maxFrameDuration])});
        return true;
    });
    return ranges;
}

Interval shortest(const std::vector<IntervalRange>& ranges) {
    Interval found;
    for (const IntervalRange& range : ranges)
        if (range.shortest.rate() > found.rate())
            found = range.shortest;
    return found;
}

// False when the format has none that fits the wish. Where nobody wishes, it is the system's affair.
bool choosePace(const std::vector<IntervalRange>& ranges, const Interval& wished, Offer& offer) {
    offer.frameDuration = kCMTimeInvalid;
    offer.candidate.interval = shortest(ranges);
    if (!wished.known())
        return true;
    if (!chooseInterval(ranges, wished, offer.candidate.interval))
        return false;
    const Interval& chosen = offer.candidate.interval;
    if (chosen.denominator <= INT32_MAX)
        offer.frameDuration = CMTimeMake(chosen.numerator, static_cast<int32_t>(chosen.denominator));
    return true;
}

Size sizeOf(AVCaptureDeviceFormat* format) {
    const CMVideoDimensions size = CMVideoFormatDescriptionGetDimensions([format formatDescription]);
    return Size(size.width, size.height);
}

} // namespace

std::vector<Offer> offersFor(const Request& request, AVCaptureDevice* device) {
    std::vector<Offer> fitting;
    std::vector<Candidate> candidates;
    forEachObject([device formats], [&](id one) {
        Offer offer = {Candidate(), one, kCMTimeInvalid};
        const uint32_t subtype = CMFormatDescriptionGetMediaSubType([offer.format formatDescription]);
        const Size size = sizeOf(offer.format);
        offer.candidate.fourcc = static_cast<uint32_t>(fitting.size()); // by which it is found again
        offer.candidate.size = size;
        offer.candidate.cost = costOf(subtype);
        const ModeWish& wish = request.wish;
        const bool fits = pixels::sizeIsSane(size.width, size.height) && offers({size, size}, wish.size) &&
                          (wish.format.empty() || wish.format == textOf(subtype));
        if (fits && choosePace(rangesOf(offer.format), wish.interval, offer)) {
            fitting.push_back(offer);
            candidates.push_back(offer.candidate);
        }
        return true;
    });
    std::vector<Offer> offers;
    for (const Candidate& candidate : ranked(std::move(candidates), request.size, request.leastRate))
        offers.push_back(fitting[candidate.fourcc]);
    return offers;
}

void addModes(AVCaptureDevice* device, NativeModes& modes) {
    forEachObject([device formats], [&](id one) {
        AVCaptureDeviceFormat* const format = one;
        NativeMode mode;
        mode.format = textOf(CMFormatDescriptionGetMediaSubType([format formatDescription]));
        mode.sizes.least = mode.sizes.most = sizeOf(format);
        if (!pixels::sizeIsSane(mode.sizes.most.width, mode.sizes.most.height))
            return true;
        std::vector<IntervalRange> ranges = rangesOf(format);
        if (ranges.empty())
            ranges.push_back(IntervalRange());
        for (const IntervalRange& range : ranges) {
            mode.intervals = range;
            modes.push_back(mode);
        }
        return true;
    });
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
