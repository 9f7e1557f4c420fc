// Waiting for frames.
#include "bindings/c/capture.h"

#include "base/qt_text.h"

namespace ostrel {
namespace c {

namespace {

// How a client wants its pictures.
struct Wanted {
    uint8_t* pixels;
    size_t bytes;
    int stride;
    OVideoPixels layout;
};

int bytesPerPixel(int32_t layout) {
    switch (layout) {
    case OSTREL_BGRA:
        return 4;
    case OSTREL_BGR:
        return 3;
    case OSTREL_GREY:
        return 1;
    default:
        throw Failure(OSTREL_BAD_ARGUMENT, "Pictures are captured as BGRA, BGR or GREY");
    }
}

Wanted wantedOf(const Place& place, uint8_t* pixels, size_t bytes, int32_t stride, int32_t layout) {
    const int row = place.width * bytesPerPixel(layout);
    if (stride == 0)
        stride = row;
    if (stride < row)
        throw Failure(OSTREL_BAD_ARGUMENT, "A row has " + std::to_string(row) + " bytes");
    const size_t needed =
        static_cast<size_t>(stride) * static_cast<size_t>(place.height - 1) + static_cast<size_t>(row);
    if (bytes < needed)
        throw Failure(OSTREL_TOO_SMALL, "The picture has " + std::to_string(needed) + " bytes");
    return {pixels, bytes, stride, static_cast<OVideoPixels>(layout)};
}

// next(ms, why) as nextVideoFrame() answers.
template <typename Next>
int waitForFrame(const Place& place, int32_t timeoutMs, Next next) {
    const int answer = waitUnlessClosed(place, timeoutMs, [&](int slice) {
        QString why;
        const int result = next(slice, &why);
        if (result < 0 && !place.closed)
            throw Failure(OSTREL_OVER, utf8Of(why));
        return result;
    });
    return answer == 0 ? OSTREL_NOTHING : OSTREL_OK;
}

ostrel_frame_info describe(const OVideoFrameFacts& facts) {
    ostrel_frame_info info = {};
    info.captured = facts.captureTime();
    info.passed_over = facts.passedOver();
    info.number = facts.number();
    info.sequence = facts.sequence();
    info.time_source = facts.timeSource();
    info.native_width = facts.nativeWidth();
    info.native_height = facts.nativeHeight();
    copyText(facts.nativeFormat(), info.native_format);
    return info;
}

ostrel_native_info describe(const OVideoNativeFrame& frame) {
    ostrel_native_info info = {};
    info.bytes = frame.bytesUsed();
    info.planes = frame.planes();
    for (int plane = 0; plane < frame.planes() && plane < 4; ++plane) {
        info.offset[plane] = frame.planeOffset(plane);
        info.bytes_per_line[plane] = frame.bytesPerLine(plane);
    }
    info.width = frame.width();
    info.height = frame.height();
    info.encoding = frame.encoding();
    info.full_range = frame.isFullRange() ? 1 : 0;
    info.fields = frame.fields();
    copyText(frame.format(), info.format);
    return info;
}

void checkOptional(const ostrel_frame_info* frame) {
    if (frame)
        checkSize(frame->size, sizeof *frame);
}

void giveOptional(const OVideoFrameFacts& facts, ostrel_frame_info* to) {
    if (to)
        Answer<ostrel_frame_info>(to).give(describe(facts));
}

} // namespace

} // namespace c
} // namespace ostrel

using namespace ostrel;
using namespace ostrel::c;

extern "C" int ostrel_descriptor(ostrel_handle handle, int32_t* descriptor, char* why, size_t why_bytes) {
    return call(why, why_bytes, [&] {
        int32_t& to = required(descriptor, "The place for the descriptor");
        const int found = objectOf(handle)->descriptor();
        if (found < 0)
            throw Failure(OSTREL_FAILED, "There is no descriptor to wait by");
        to = found;
        return OSTREL_OK;
    });
}

extern "C" int ostrel_next(ostrel_handle capture, uint8_t* pixels, size_t bytes, int32_t stride,
                           int32_t layout, int32_t timeout_ms, ostrel_frame_info* frame, char* why,
                           size_t why_bytes) {
    return call(why, why_bytes, [&] {
        required(pixels, "The memory for the picture");
        checkOptional(frame);
        const auto place = objectOf<Place>(capture, "a capture");
        const Wanted wanted = wantedOf(*place, pixels, bytes, stride, layout);
        const Turn turn(*place);
        const int answer = waitForFrame(*place, timeout_ms, [&](int slice, QString* words) {
            return nextVideoFrame(place->reader, wanted.pixels, wanted.bytes, wanted.stride, wanted.layout,
                                  slice, &place->facts, words);
        });
        if (answer == OSTREL_OK) {
            place->nativeWaits = false; // it would be an older one
            giveOptional(place->facts, frame);
        }
        return answer;
    });
}

extern "C" int ostrel_next_native(ostrel_handle capture, uint8_t* data, size_t bytes, int32_t timeout_ms,
                                  ostrel_native_info* native, ostrel_frame_info* frame, char* why,
                                  size_t why_bytes) {
    return call(why, why_bytes, [&]() -> int {
        if (bytes > 0)
            required(data, "The memory for the frame");
        const Answer<ostrel_native_info> to(native);
        checkOptional(frame);
        const auto place = objectOf<Place>(capture, "a capture");
        const Turn turn(*place);
        const int answer =
            place->nativeWaits ? OSTREL_OK : waitForFrame(*place, timeout_ms, [&](int slice, QString* words) {
                return nextNativeFrame(place->reader, place->native, slice, words);
            });
        if (answer != OSTREL_OK)
            return answer;
        to.give(describe(place->native));
        giveOptional(place->native.facts(), frame);
        place->nativeWaits = place->native.bytesUsed() > bytes;
        if (place->nativeWaits)
            throw Failure(OSTREL_TOO_SMALL,
                          "The frame has " + std::to_string(place->native.bytesUsed()) + " bytes");
        if (place->native.bytesUsed() > 0)
            std::memcpy(data, place->native.data(), place->native.bytesUsed());
        return OSTREL_OK;
    });
}
